// A stream in memory, made of chunks of 1 MiB that are never moved: growing copies nothing.
#pragma once

#include "core/lock.h"
#include "stream/binary_stream.h"

#include <vector>

namespace Corvane::Stream {

class MemoryStream : public IBinaryStream {
public:
    MemoryStream() = default;
    MemoryStream(const MemoryStream&) = delete;
    MemoryStream& operator=(const MemoryStream&) = delete;

    // Running out of memory is std::bad_alloc and changes nothing. Surplus chunks are freed by resize().
    State state() const override;
    std::uint64_t seek(std::int64_t offset, Origin origin) override;
    void resize(std::uint64_t size) override;
    void close() override;
    std::size_t read(std::span<std::uint8_t> buffer) override;
    void write(std::span<const std::uint8_t> bytes) override;
    SharedBytes read(std::size_t count) override;
    SharedBytes seekAndRead(std::int64_t position, std::size_t count) override;
    void seekAndWrite(std::int64_t position, std::span<const std::uint8_t> bytes) override;

    static constexpr std::uint32_t chunkSize = 0x100000;

private:
    // Chunks are overwritten at once, so nobody clears them first.
    template <class T>
    struct UninitializedAllocator : std::allocator<T> {
        template <class U>
        struct rebind {
            using other = UninitializedAllocator<U>;
        };
        template <class U>
        void construct(U*) noexcept {}
    };
    using Chunk = std::vector<std::uint8_t, UninitializedAllocator<std::uint8_t>>;

    void checkOpen(const ErrorDescriptor& descriptor) const;
    std::uint64_t position() const noexcept;
    void setPosition(std::uint64_t position) noexcept;
    std::uint64_t seekLocked(std::int64_t offset, Origin origin);
    void reserve(std::uint64_t size);
    void clear(std::uint64_t from, std::uint64_t to) noexcept;
    SharedBytes readLocked(std::size_t count);
    void writeLocked(std::span<const std::uint8_t> bytes);
    template <class Take>
    std::size_t take(std::size_t count, Take&& takePiece);

    std::uint32_t chunkIndex_ = 0;
    std::uint32_t offsetInChunk_ = 0;
    std::uint64_t size_ = 0;
    std::vector<Chunk> chunks_;
    bool closed_ = false;
    mutable SharedMutex mutex_;
};

}  // namespace Corvane::Stream
