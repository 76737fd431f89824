// minizip's I/O functions over a storage, with buffers: minizip reads and writes headers byte by byte.
#pragma once

#include "compression/zip_storage.h"

#include <minizip/ioapi.h>

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <span>

namespace Corvane::Compression::detail {

// What the storage throws does not pass through minizip: it is kept, the function fails, and the one who
// called minizip throws it on. One thread at a time.
class ZipIo {
public:
    // The archive begins at `begin` of the storage, which is position 0 here.
    explicit ZipIo(std::unique_ptr<ZipStorage> storage, std::uint64_t begin = 0);
    ZipIo(const ZipIo&) = delete;
    ZipIo& operator=(const ZipIo&) = delete;

    // For minizip's open functions; the object must outlive what they return.
    zlib_filefunc64_def functions() noexcept;

    // Throws what the storage threw, if it did.
    void rethrow() const;

    // From now on nothing more reaches the storage, and writing seems to succeed.
    void discard() noexcept;

    // From now on what is written is appended to `target`, while the position moves on; null ends that.
    void divert(Bytes* target);

    // The same operations for C++ callers; they may throw.
    std::size_t read(std::span<std::uint8_t> buffer);
    void write(std::span<const std::uint8_t> bytes);
    bool seek(std::uint64_t offset, int origin);
    void flush();
    std::uint64_t position() const noexcept { return position_; }

private:
    friend struct ZipIoFunctions;

    std::size_t fromWindow(std::span<std::uint8_t> buffer);

    std::unique_ptr<ZipStorage> storage_;
    std::uint64_t begin_;
    std::uint64_t position_ = 0;
    Bytes window_;  // read ahead, lies at windowBegin_
    std::uint64_t windowBegin_ = 0;
    Bytes pending_;  // not written yet, ends at position_
    std::exception_ptr failure_;
    Bytes* diverted_ = nullptr;
    bool discarded_ = false;
};

}  // namespace Corvane::Compression::detail
