// A zip archive being read, over minizip.
#pragma once

#include "compression/sink.h"
#include "compression/zip_end.h"
#include "compression/zip_entry.h"
#include "compression/zip_io.h"
#include "core/exception.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>

namespace Corvane::Compression::detail {

// An entry that this program cannot unpack, and why, in words for the user.
class ZipException : public CustomException {
public:
    ZipException(const ErrorDescriptor& descriptor, std::wstring reason)
        : CustomException(descriptor), reason_(std::move(reason)) {}

    std::wstring details() const override { return reason_; }

private:
    std::wstring reason_;
};

// Throws ZipException E_UNZIP for an encrypted entry and E_UNZIP_BAD for one that is compressed by another
// method than deflate.
void checkSupported(const ZipEntry& entry);

// No bytes yet, with room for the content of an entry if an archive of that size can hold so much: the room
// is not what a small one claims. Throws std::bad_alloc.
Bytes roomFor(const ZipEntry& entry, std::uint64_t archiveSize);

// There is a current entry as long as hasEntry() says so; the first one after opening. What the storage
// throws passes through all functions.
class UnZipFile {
public:
    // Throws Exception E_ZIP_OPEN for what is not an archive, or is one in several parts.
    static UnZipFile open(std::unique_ptr<ZipStorage> storage);

    // An archive that ends where the stream does, which must outlive it; whatever lies before it is skipped.
    static UnZipFile open(Stream::IBinaryStream& stream);

    ~UnZipFile();
    UnZipFile(const UnZipFile&) = delete;
    UnZipFile& operator=(const UnZipFile&) = delete;

    bool hasEntry() const noexcept { return hasEntry_; }

    // Moves on in the directory, whose length counts and not the number of entries that the archive states.
    // There is no entry any more where it is broken.
    void next();

    // Whether no entry is left: all of the directory was moved through, and as many entries as it should
    // have, or these are followed by something else, a signature for one.
    bool isAtEnd() const noexcept;

    // The part of the directory that was moved through.
    std::uint64_t position() const noexcept { return position_; }

    // Moves to an entry of this archive, by its place in the directory.
    void select(std::uint64_t directoryPosition);

    // What the directory says. Throws an Exception with `failure`.
    ZipEntry entry(const ErrorDescriptor& failure);

    // Where the archive and its directory lie.
    const ZipEnd& end() const noexcept { return end_; }

    // Restores the content, not more than the directory says. Throws Exception E_UNZIP_BAD when it cannot be
    // opened because its local header disagrees with the directory or it uses another method than deflate;
    // E_UNZIP when it is encrypted, cut off or damaged.
    void extract(const Sink& sink);

private:
    UnZipFile(std::unique_ptr<ZipIo> io, void* handle, ZipEnd end);

    void openContent(const ZipEntry& entry);
    void readContent(const ZipEntry& entry, const Sink& sink);

    std::unique_ptr<ZipIo> io_;
    void* handle_;  // null for an archive without entries
    ZipEnd end_;
    std::uint64_t position_ = 0;  // in the directory
    std::uint64_t passed_ = 0;    // entries
    bool hasEntry_ = false;
    // Room for those of one entry, made once: there may be very many entries.
    std::string name_;
    Bytes extra_;
};

}  // namespace Corvane::Compression::detail
