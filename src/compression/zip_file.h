// A zip archive being written, over minizip.
#pragma once

#include "compression/zip_end.h"
#include "compression/zip_entry.h"
#include "compression/zip_io.h"
#include "core/errors.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace Corvane::Compression::detail {

class ZipFile {
public:
    struct Entry {
        std::string name;  // UTF-8; a folder's ends in "/"
        ZipDate date;
        std::uint64_t size = 0;  // the most that will be written; beyond 4 GiB it takes another header
        int level = -1;          // of zlib
    };

    // The end and the directory of an archive that is to grow, whose new entries are written over them; the
    // directory's bytes must outlive the object. Throws Exception E_ZIP_OPEN and what the storage throws.
    static ZipFile open(std::unique_ptr<ZipStorage> storage, ZipEnd end = {},
                        std::span<const std::uint8_t> directory = {});

    // Without close() nothing more is written, and the archive stays half written.
    ~ZipFile();
    ZipFile(const ZipFile&) = delete;
    ZipFile& operator=(const ZipFile&) = delete;

    // Begins an entry; throws an Exception with `failure` when it cannot, and what the storage throws.
    void openEntry(const Entry& entry, const ErrorDescriptor& failure);

    // Throws Exception E_ZIP and what the storage throws, as the other two do.
    void write(std::span<const std::uint8_t> bytes);
    void closeEntry();

    struct Closed {
        ZipEnd end;          // as it is now
        Bytes directory;     // what was added to it
        std::uint64_t size;  // of the storage that the archive takes
    };
    // Writes the directory and the end, with the comment that was there.
    Closed close();

private:
    ZipFile(std::unique_ptr<ZipIo> io, void* handle, ZipEnd end,
            std::span<const std::uint8_t> directory) noexcept
        : io_(std::move(io)), handle_(handle), end_(std::move(end)), directory_(directory) {}

    void check(int status, const ErrorDescriptor& failure) const;

    std::unique_ptr<ZipIo> io_;
    void* handle_;
    ZipEnd end_;
    std::span<const std::uint8_t> directory_;
    std::uint64_t room_ = 0;  // what the current entry can still take
};

}  // namespace Corvane::Compression::detail
