// What an operation writes into a stream: all of it, or nothing of it stays.
#pragma once

#include "stream/binary_stream.h"

namespace Corvane::Compression::detail {

// Begins at the stream's position. After commit() the stream ends behind what was written. Without it the
// stream ends where the range began, or is as it was when nothing was written. The stream must outlive it.
class OutputRange {
public:
    explicit OutputRange(Stream::IBinaryStream& stream) : stream_(stream), before_(stream.state()) {}
    OutputRange(const OutputRange&) = delete;
    OutputRange& operator=(const OutputRange&) = delete;

    ~OutputRange() {
        if (committed_) {
            return;
        }
        try {
            // Whatever was written moved the position.
            const Stream::State now = stream_.state();
            if (now.position != before_.position || now.size != before_.size) {
                stream_.resize(before_.position);
            }
        } catch (...) {
            // The failure that led here is the one to report.
        }
    }

    void commit() {
        const Stream::State state = stream_.state();
        if (state.position < state.size) {
            stream_.resize(state.position);
        }
        committed_ = true;
    }

private:
    Stream::IBinaryStream& stream_;
    Stream::State before_;
    bool committed_ = false;
};

}  // namespace Corvane::Compression::detail
