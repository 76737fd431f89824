// A zip archive being written, over minizip.
#pragma once

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
    enum class Mode {
        create,
        append,  // the storage holds an archive, whose directory is overwritten at once
    };

    struct Entry {
        std::string name;  // UTF-8; a folder's ends in "/"
        ZipDate date;
        std::uint64_t size = 0;  // the most that will be written; decides whether it becomes a zip64 entry
        int level = -1;          // of zlib
    };

    // Of an archive to be grown `present` tells the number of entries. Throws Exception E_ZIP_OPEN and what
    // the storage throws.
    static ZipFile open(std::unique_ptr<ZipStorage> storage, Mode mode = Mode::create,
                        std::uint64_t present = 0);

    // An archive that begins at the position of the stream, which must outlive it.
    static ZipFile open(Stream::IBinaryStream& stream);

    // What was not closed is given up: nothing more is written, and what was is left as it is.
    ~ZipFile();
    ZipFile(const ZipFile&) = delete;
    ZipFile& operator=(const ZipFile&) = delete;

    // Begins an entry; throws an Exception with `failure` when it cannot, and what the storage throws.
    void openEntry(const Entry& entry, const ErrorDescriptor& failure);

    // Throws Exception E_ZIP and what the storage throws, as the other two do.
    void write(std::span<const std::uint8_t> bytes);
    void closeEntry();

    // With those that were there.
    std::uint64_t entryCount() const noexcept { return entries_; }

    // Writes the directory, and the comment that was there; returns the size of the archive.
    std::uint64_t close();

private:
    ZipFile(std::unique_ptr<ZipIo> io, void* handle, std::uint64_t entries, Bytes comment) noexcept
        : io_(std::move(io)), handle_(handle), entries_(entries), comment_(std::move(comment)) {}

    void check(int status, const ErrorDescriptor& failure) const;

    std::unique_ptr<ZipIo> io_;
    void* handle_;
    std::uint64_t entries_;
    Bytes comment_;
    std::uint64_t room_ = 0;  // what the current entry can still take
};

}  // namespace Corvane::Compression::detail
