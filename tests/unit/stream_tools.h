// Bytes and streams for tests of what works on streams.
#pragma once

#include "binary/bytes.h"
#include "core/exception.h"
#include "core/progress.h"
#include "stream/memory_stream.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <string_view>
#include <utility>

inline Corvane::Bytes bytesOf(std::string_view text) {
    return {text.begin(), text.end()};
}

// Bytes that deflate can do something with, but not everything: a generator's numbers, each of them repeated.
inline Corvane::Bytes sampleBytes(std::size_t size) {
    Corvane::Bytes bytes(size);
    std::uint32_t number = 1;
    for (std::size_t i = 0; i < size; ++i) {
        number = i % 3 == 0 ? number * 1664525u + 1013904223u : number;
        bytes[i] = static_cast<std::uint8_t>(number >> 24);
    }
    return bytes;
}

inline Corvane::Bytes contentOf(Corvane::Stream::IBinaryStream& stream) {
    return *stream.seekAndRead(0, static_cast<std::size_t>(stream.state().size));
}

// The code of the component's exception that `work` throws; 0 when it throws none.
template <class Work>
std::uint32_t errorCode(Work&& work) {
    try {
        work();
    } catch (const Corvane::Exception& exception) {
        return exception.code();
    }
    return 0;
}

// Gives its bytes one at a time, as a slow source may.
class OneByteStream : public Corvane::Stream::MemoryStream {
public:
    explicit OneByteStream(std::span<const std::uint8_t> bytes) {
        write(bytes);
        seek(0, Corvane::Stream::Origin::beginning);
    }
    using MemoryStream::read;
    std::size_t read(std::span<std::uint8_t> buffer) override {
        return MemoryStream::read(buffer.first(std::min<std::size_t>(buffer.size(), 1)));
    }
};

// Cancels the operation that reads it as soon as a position is reached.
class CancelingStream : public Corvane::Stream::MemoryStream {
public:
    CancelingStream(std::span<const std::uint8_t> bytes, std::uint64_t position,
                    Corvane::SharedProgress progress)
        : position_(position), progress_(std::move(progress)) {
        write(bytes);
        seek(0, Corvane::Stream::Origin::beginning);
    }
    using MemoryStream::read;
    std::size_t read(std::span<std::uint8_t> buffer) override {
        const std::size_t count = MemoryStream::read(buffer);
        if (state().position >= position_) {
            progress_->cancel();
        }
        return count;
    }

private:
    std::uint64_t position_;
    Corvane::SharedProgress progress_;
};
