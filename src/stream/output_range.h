// What an operation writes into a stream: all of it, or nothing of it stays.
#pragma once

#include "stream/binary_stream.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <span>

namespace Corvane::Stream {

// Begins at the stream's position, where the stream itself is written at that of the first writing: it may be
// read meanwhile, and what was read is not lost. After commit() the stream ends behind what was written.
// Without it the stream ends where the range began, or is as it was when nothing was written, even when
// somebody has closed the file meanwhile. The stream must outlive it.
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
    IBinaryStream& stream() {
        if (!written_)
            begin_ = stream_.state().position;
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
    std::uint64_t begin_;
    bool written_ = false;
    bool committed_ = false;
};

}  // namespace Corvane::Stream
