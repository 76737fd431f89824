// What an operation writes into a stream: all of it or nothing.
#pragma once

#include "stream/binary_stream.h"

#include <cstdint>

namespace Corvane::Compression::detail {

// Begins at the stream's position. After commit() the stream ends behind what was written; without it the
// stream ends where the range began. The stream must outlive it.
class OutputRange {
public:
    explicit OutputRange(Stream::IBinaryStream& stream) : stream_(stream), begin_(stream.state().position) {}
    OutputRange(const OutputRange&) = delete;
    OutputRange& operator=(const OutputRange&) = delete;

    ~OutputRange() {
        if (committed_) {
            return;
        }
        try {
            stream_.resize(begin_);
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
    std::uint64_t begin_;
    bool committed_ = false;
};

}  // namespace Corvane::Compression::detail
