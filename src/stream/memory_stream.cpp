#include "stream/memory_stream.h"

#include "core/log.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <mutex>
#include <new>

namespace Corvane::Stream {

void MemoryStream::checkOpen(const ErrorDescriptor& descriptor) const {
    if (closed_)
        throw ClosedStreamException(descriptor);
}

std::uint64_t MemoryStream::position() const noexcept {
    return std::uint64_t{chunkIndex_} * chunkSize + offsetInChunk_;
}

void MemoryStream::setPosition(std::uint64_t position) noexcept {
    chunkIndex_ = static_cast<std::uint32_t>(position / chunkSize);
    offsetInChunk_ = static_cast<std::uint32_t>(position % chunkSize);
}

State MemoryStream::state() const {
    const std::lock_guard guard(mutex_);
    checkOpen(E_FILE_SIZE);
    return {position(), size_};
}

std::uint64_t MemoryStream::seekLocked(std::int64_t offset, Origin origin) {
    checkOpen(E_SEEK_IN_FILE);
    const std::uint64_t wanted = target(offset, origin, {position(), size_});
    writeLog(LogLevel::debug, L"Corvane::Stream::MemoryStream::seek", L"[in] offset: ", offset,
             L" [in] origin: ", static_cast<std::uint32_t>(origin), L", old position: ", position(),
             L", new position: ", wanted);
    setPosition(wanted);
    return wanted;
}

std::uint64_t MemoryStream::seek(std::int64_t offset, Origin origin) {
    const std::lock_guard guard(mutex_);
    return seekLocked(offset, origin);
}

// Appends chunks until there is room for `size` bytes in all; takes them back when memory runs out.
void MemoryStream::reserve(std::uint64_t size) {
    const std::uint64_t wanted = size / chunkSize + (size % chunkSize != 0 ? 1 : 0);
    if (wanted > std::numeric_limits<std::uint32_t>::max())
        throw std::bad_alloc();
    const std::size_t had = chunks_.size();
    try {
        while (chunks_.size() < wanted)
            chunks_.emplace_back(chunkSize);
    } catch (...) {
        chunks_.resize(had);
        throw;
    }
}

void MemoryStream::clear(std::uint64_t from, std::uint64_t to) noexcept {
    while (from < to) {
        const auto offset = static_cast<std::size_t>(from % chunkSize);
        const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(to - from, chunkSize - offset));
        std::memset(chunks_[static_cast<std::size_t>(from / chunkSize)].data() + offset, 0, count);
        from += count;
    }
}

void MemoryStream::resize(std::uint64_t size) {
    const std::lock_guard guard(mutex_);
    writeLog(LogLevel::debug, L"Corvane::Stream::MemoryStream::resize", L"[in] size: ", size, L", old size: ",
             size_);
    checkOpen(E_FILE_WRITE);
    reserve(size);
    clear(size_, size);
    size_ = size;
    chunks_.resize(static_cast<std::size_t>(size / chunkSize + (size % chunkSize != 0 ? 1 : 0)));
    if (position() > size_)
        setPosition(size_);
}

void MemoryStream::close() {
    const std::lock_guard guard(mutex_);
    writeLog(LogLevel::debug, L"Corvane::Stream::MemoryStream::close", L"size: ", size_);
    closed_ = true;
    size_ = 0;
    setPosition(0);
    std::vector<Chunk>().swap(chunks_);
}

// Hands the next `count` bytes, or as many as there are, to `takePiece` chunk by chunk and moves behind them.
template <class Take>
std::size_t MemoryStream::take(std::size_t count, Take&& takePiece) {
    const auto total = static_cast<std::size_t>(std::min<std::uint64_t>(count, size_ - position()));
    for (std::size_t done = 0; done < total;) {
        const std::size_t piece = std::min<std::size_t>(total - done, chunkSize - offsetInChunk_);
        takePiece(std::span<const std::uint8_t>(chunks_[chunkIndex_]).subspan(offsetInChunk_, piece));
        setPosition(position() + piece);
        done += piece;
    }
    return total;
}

std::size_t MemoryStream::read(std::span<std::uint8_t> buffer) {
    const std::lock_guard guard(mutex_);
    checkOpen(E_FILE_READ);
    std::uint8_t* out = buffer.data();
    return take(buffer.size(), [&](std::span<const std::uint8_t> piece) {
        std::memcpy(out, piece.data(), piece.size());
        out += piece.size();
    });
}

SharedBytes MemoryStream::readLocked(std::size_t count) {
    writeLog(LogLevel::debug, L"Corvane::Stream::MemoryStream::read", L"[in] count: ", count, L", position: ",
             position());
    checkOpen(E_FILE_READ);
    auto bytes = std::make_shared<Bytes>();
    makeRoom(*bytes, std::min<std::uint64_t>(count, size_ - position()));
    take(count, [&](std::span<const std::uint8_t> piece) {
        bytes->insert(bytes->end(), piece.begin(), piece.end());
    });
    return bytes;
}

SharedBytes MemoryStream::read(std::size_t count) {
    const std::lock_guard guard(mutex_);
    return readLocked(count);
}

SharedBytes MemoryStream::seekAndRead(std::int64_t position, std::size_t count) {
    const std::lock_guard guard(mutex_);
    seekLocked(position, Origin::beginning);
    return readLocked(count);
}

void MemoryStream::writeLocked(std::span<const std::uint8_t> bytes) {
    writeLog(LogLevel::debug, L"Corvane::Stream::MemoryStream::write", L"[in] size: ", bytes.size(),
             L", position: ", position());
    checkOpen(E_FILE_WRITE);
    reserve(position() + bytes.size());
    while (!bytes.empty()) {
        const std::size_t piece = std::min<std::size_t>(bytes.size(), chunkSize - offsetInChunk_);
        std::memcpy(chunks_[chunkIndex_].data() + offsetInChunk_, bytes.data(), piece);
        setPosition(position() + piece);
        bytes = bytes.subspan(piece);
    }
    size_ = std::max(size_, position());
}

void MemoryStream::write(std::span<const std::uint8_t> bytes) {
    const std::lock_guard guard(mutex_);
    writeLocked(bytes);
}

void MemoryStream::seekAndWrite(std::int64_t position, std::span<const std::uint8_t> bytes) {
    const std::lock_guard guard(mutex_);
    seekLocked(position, Origin::beginning);
    writeLocked(bytes);
}

}  // namespace Corvane::Stream
