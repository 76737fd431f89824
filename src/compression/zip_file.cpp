#include "compression/zip_file.h"

#include "core/exception.h"

#include <minizip/zip.h>
#include <zlib.h>

#include <algorithm>
#include <limits>
#include <utility>

namespace Corvane::Compression::detail {
namespace {

// APPNOTE.TXT 4.4.2: made on VFAT, whose attributes are those of MS-DOS, by version 2.0 of the format. Of an
// archive made on MS-DOS itself Info-ZIP's unzip would take even UTF-8 names for names in an MS-DOS code
// page.
constexpr uLong versionMadeBy = 14 << 8 | 20;
// APPNOTE.TXT 4.4.4, bit 11: the name is UTF-8.
constexpr uLong utf8Name = 1 << 11;
constexpr uLong attributeDirectory = 0x10;
constexpr uLong attributeArchive = 0x20;

// Entries that may pass 4 GiB when deflate finds nothing to save: it adds 5 bytes to each 16 KiB at most.
constexpr std::uint64_t zip64Size = 0xFFFFFFFF - 0xFFFFFFFF / 1000;

bool isAscii(const std::string& text) noexcept {
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

}  // namespace

ZipFile ZipFile::open(std::unique_ptr<ZipStorage> storage, ZipEnd end,
                      std::span<const std::uint8_t> directory) {
    auto io = std::make_unique<ZipIo>(std::move(storage), end.begin);
    io->seek(end.directory, ZLIB_FILEFUNC_SEEK_SET);
    zlib_filefunc64_def functions = io->functions();
    // To minizip it is a new archive, which has something else before its first entry.
    void* handle = zipOpen2_64("", APPEND_STATUS_CREATE, nullptr, &functions);
    if (!handle) {
        io->rethrow();
        throw Exception(E_ZIP_OPEN);
    }
    return ZipFile(std::move(io), handle, std::move(end), directory);
}

ZipFile::~ZipFile() {
    if (handle_) {
        io_->discard();
        zipClose(handle_, nullptr);
    }
}

void ZipFile::check(int status, const ErrorDescriptor& failure) const {
    io_->rethrow();
    if (status != ZIP_OK)
        throw Exception(failure);
}

void ZipFile::openEntry(const Entry& entry, const ErrorDescriptor& failure) {
    // minizip takes a name up to its first zero.
    if (entry.name.empty() || entry.name.find('\0') != std::string::npos)
        throw Exception(failure);
    zip_fileinfo info{};
    info.dosDate = entry.date.pack();
    info.external_fa = entry.name.back() == '/' ? attributeDirectory : attributeArchive;
    const bool zip64 = entry.size >= zip64Size;
    const int status =
        zipOpenNewFileInZip4_64(handle_, entry.name.c_str(), &info, nullptr, 0, nullptr, 0, nullptr,
                                Z_DEFLATED, entry.level, 0, -MAX_WBITS, DEF_MEM_LEVEL, Z_DEFAULT_STRATEGY,
                                nullptr, 0, versionMadeBy, isAscii(entry.name) ? 0 : utf8Name, zip64 ? 1 : 0);
    check(status, failure);
    ++end_.entries;
    room_ = zip64 ? std::numeric_limits<std::uint64_t>::max() : zip64Size;
}

void ZipFile::write(std::span<const std::uint8_t> bytes) {
    // A stream that grew beyond 4 GiB meanwhile no longer fits the header that was written for it.
    if (bytes.size() > room_)
        throw Exception(E_ZIP);
    room_ -= bytes.size();
    while (!bytes.empty()) {
        const std::size_t count = std::min<std::size_t>(bytes.size(), std::numeric_limits<int>::max());
        check(zipWriteInFileInZip(handle_, bytes.data(), static_cast<unsigned>(count)), E_ZIP);
        bytes = bytes.subspan(count);
    }
}

void ZipFile::closeEntry() {
    check(zipCloseFileInZip(handle_), E_ZIP);
}

ZipFile::Closed ZipFile::close() {
    Bytes closing;
    io_->divert(&closing);
    const std::uint64_t position = io_->position();
    const int status = zipClose(std::exchange(handle_, nullptr), "");
    io_->divert(nullptr);
    check(status, E_ZIP);
    const std::span<const std::uint8_t> added = directoryIn(closing);
    end_.directory = position;
    end_.size = directory_.size() + added.size();
    io_->seek(position, ZLIB_FILEFUNC_SEEK_SET);
    io_->write(directory_);
    io_->write(added);
    io_->write(endRecords(end_));
    io_->flush();
    const std::uint64_t size = end_.begin + io_->position();
    return {std::move(end_), Bytes(added.begin(), added.end()), size};
}

}  // namespace Corvane::Compression::detail
