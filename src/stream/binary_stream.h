// The stream of bytes through which large data travels in pieces: memory streams and files.
#pragma once

#include "binary/bytes.h"
#include "core/exception.h"

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <span>
#include <string>

namespace Corvane::Stream {

// Where seek() counts from. Any other number is taken for `beginning`.
enum class Origin : std::uint32_t {
    beginning = 0,
    current = 1,
    end = 2,
};

struct State {
    std::uint64_t position;
    std::uint64_t size;
};

// A stream was used after close(). The descriptor names what was tried.
class ClosedStreamException : public CustomException {
public:
    using CustomException::CustomException;

    std::wstring details() const override;
};

// All operations may be called from any thread; each implementation runs them one after another. After
// close() every operation but close() itself throws ClosedStreamException: E_FILE_SIZE, E_SEEK_IN_FILE,
// E_FILE_READ or E_FILE_WRITE.
class IBinaryStream {
public:
    virtual ~IBinaryStream() = default;

    // Position and size at one moment.
    virtual State state() const = 0;

    // Where the bytes lie, for the log: a path, or empty for memory.
    virtual std::wstring place() const { return {}; }

    // Moves the position and returns it. A position before the beginning is E_OFFSET_OUT_OF_RANGE, and so is
    // one beyond the end.
    virtual std::uint64_t seek(std::int64_t offset, Origin origin) = 0;

    // Cuts the stream off or fills it up with zeros. A position beyond the new end moves to it.
    virtual void resize(std::uint64_t size) = 0;

    // Releases the data or the file. Never fails twice; a second call does nothing.
    virtual void close() = 0;

    // Another stream over the same bytes, which stays open when this one is closed, with the same position;
    // null where closing lets go of the bytes themselves.
    virtual std::shared_ptr<IBinaryStream> duplicate() const { return nullptr; }

    // Fills `buffer` from the position on as far as the stream goes and moves behind what was read; returns
    // how much that was, 0 at the end only.
    virtual std::size_t read(std::span<std::uint8_t> buffer) = 0;

    // Writes all of `bytes` at the position and moves behind them. What was written before a failure stays.
    virtual void write(std::span<const std::uint8_t> bytes) = 0;

    // At most `count` bytes from the position on, moving behind them; empty at the end.
    virtual SharedBytes read(std::size_t count) = 0;

    // Seeking from the beginning and transferring as one operation, which no other one comes between.
    virtual SharedBytes seekAndRead(std::int64_t position, std::size_t count) = 0;
    virtual void seekAndWrite(std::int64_t position, std::span<const std::uint8_t> bytes) = 0;
};

// A stream as the log shows it: position, size and place, never what it holds.
std::wostream& operator<<(std::wostream& out, const IBinaryStream& stream);

// A duplicate of the stream, or the stream itself, which must outlive it, where there is none.
std::shared_ptr<IBinaryStream> keptOpen(IBinaryStream& stream);

// The position that seek(offset, origin) leads to from `state`. Throws Exception E_OFFSET_OUT_OF_RANGE when
// it lies before the beginning or beyond the end.
std::uint64_t target(std::int64_t offset, Origin origin, const State& state);

// `count` bytes of `bytes`, beginning at `offset`; what reaches beyond its end is left out. Throws Exception
// E_OFFSET_OUT_OF_RANGE when `offset` itself lies beyond it.
std::span<const std::uint8_t> part(const Bytes& bytes, std::size_t offset, std::size_t count);

}  // namespace Corvane::Stream
