// What an operation writes into a stream: all of it, or nothing of it stays.
#pragma once

#include "core/exception.h"
#include "stream/binary_stream.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <span>

namespace Corvane::Stream {

// For operations that read one stream and write another: in one and the same they would overwrite what they
// have not read yet. Throws Exception with the operation's error then.
inline void expectSeparate(const IBinaryStream& input, const IBinaryStream& output,
                           const ErrorDescriptor& error) {
    if (&input == &output)
        throw Exception(error);
}

// Begins at the stream's position. After commit() the stream ends behind what was written. Without it the
// stream ends where the range began, or is as it was when nothing was written, even when somebody has closed
// the file meanwhile. The stream must outlive it.
class OutputRange {
public:
    explicit OutputRange(IBinaryStream& stream)
        : stream_(stream), kept_(keptOpen(stream)), begin_(stream.state().position) {}
    OutputRange(const OutputRange&) = delete;
    OutputRange& operator=(const OutputRange&) = delete;

    ~OutputRange() {
        if (committed_ || !written_)
            return;
        try {
            kept_->resize(begin_);
        } catch (...) {
            // The failure that led here is the one to report.
        }
    }

    std::uint64_t begin() const noexcept { return begin_; }

    // For who writes the stream himself, before he does.
    void noteWriting() noexcept { written_ = true; }

    // The stream, to be written at once.
    IBinaryStream& stream() noexcept {
        noteWriting();
        return stream_;
    }

    std::function<void(std::span<const std::uint8_t>)> sink() {
        return [this](std::span<const std::uint8_t> piece) { stream().write(piece); };
    }

    void commit() {
        const State state = stream_.state();
        if (state.position < state.size)
            stream_.resize(state.position);
        committed_ = true;
    }

private:
    IBinaryStream& stream_;
    std::shared_ptr<IBinaryStream> kept_;
    const std::uint64_t begin_;
    bool written_ = false;
    bool committed_ = false;
};

}  // namespace Corvane::Stream
