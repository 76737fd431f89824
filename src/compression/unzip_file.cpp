#include "compression/unzip_file.h"

#include "compression/inflater.h"
#include "compression/zip_name.h"
#include "core/errors.h"

#include <minizip/unzip.h>
#include <zlib.h>

#include <algorithm>
#include <string>

namespace Corvane::Compression::detail {
namespace {

// APPNOTE.TXT 4.4.4: bit 0 an encrypted entry, bit 13 a masked local header.
constexpr uLong encryptedFlags = 1 << 0 | 1 << 13;
constexpr std::uint16_t stored = 0;

}  // namespace

void checkSupported(const ZipEntry& entry) {
    if (entry.encrypted)
        throw ZipException(E_UNZIP, L"элемент архива зашифрован");
    if (entry.method != stored && entry.method != Z_DEFLATED) {
        throw ZipException(E_UNZIP_BAD,
                           L"метод сжатия " + std::to_wstring(entry.method) + L" не поддерживается");
    }
}

Bytes roomFor(const ZipEntry& entry, std::uint64_t archiveSize) {
    // zlib's technical details: deflate restores 1032 bytes from one at the most.
    constexpr std::uint64_t mostFromOne = 1032;
    const bool isPossible = entry.size / mostFromOne <= std::min(entry.packedSize, archiveSize);
    Bytes bytes;
    makeRoom(bytes, isPossible ? entry.size : 0);
    return bytes;
}

UnZipFile::UnZipFile(std::unique_ptr<ZipIo> io, void* handle, ZipEnd end)
    : io_(std::move(io)), handle_(handle), end_(std::move(end)), hasEntry_(handle != nullptr) {}

UnZipFile UnZipFile::open(std::unique_ptr<ZipStorage> storage) {
    std::optional<ZipEnd> end = readEnd(*storage);
    if (!end || (end->size == 0 && end->entries != 0))
        throw Exception(E_ZIP_OPEN);
    // minizip looks for zip64 records in the last 64 KiB before it believes that there are none: where they
    // are always there, and last, it finds them at once.
    storage =
        storageWithTail(std::move(storage), end->begin + end->directory + end->size, zip64Records(*end));
    auto io = std::make_unique<ZipIo>(std::move(storage), end->begin);
    if (end->size == 0)
        return UnZipFile(std::move(io), nullptr, *std::move(end));
    zlib_filefunc64_def functions = io->functions();
    void* handle = unzOpen2_64("", &functions);
    if (!handle) {
        io->rethrow();
        throw Exception(E_ZIP_OPEN);
    }
    return UnZipFile(std::move(io), handle, *std::move(end));
}

UnZipFile UnZipFile::open(Stream::IBinaryStream& stream) {
    return open(streamStorage(stream, 0));
}

UnZipFile::~UnZipFile() {
    if (handle_)
        unzClose(handle_);
}

void UnZipFile::next() {
    // APPNOTE.TXT 4.3.12: the header, and what has a length of its own.
    constexpr std::uint64_t headerSize = 46;
    unz_file_info64 info{};
    const int status = unzGetCurrentFileInfo64(handle_, &info, nullptr, 0, nullptr, 0, nullptr, 0);
    io_->rethrow();
    hasEntry_ = status == UNZ_OK;
    if (!hasEntry_)
        return;
    ++passed_;
    const std::uint64_t size =
        headerSize + info.size_filename + info.size_file_extra + info.size_file_comment;
    select(position_ + size);
}

bool UnZipFile::isAtEnd() const noexcept {
    return passed_ == end_.entries || (passed_ > end_.entries && position_ == end_.size);
}

void UnZipFile::select(std::uint64_t directoryPosition) {
    position_ = directoryPosition;
    const unz64_file_pos position{end_.directory + position_, 0};
    hasEntry_ = handle_ && position_ < end_.size && unzGoToFilePos64(handle_, &position) == UNZ_OK;
    io_->rethrow();
}

ZipEntry UnZipFile::entry(const ErrorDescriptor& failure) {
    unz_file_info64 info{};
    constexpr uLong longest = 0xFFFF;  // both lengths have 16 bits
    name_.resize(longest);
    extra_.resize(longest);
    const int status =
        unzGetCurrentFileInfo64(handle_, &info, name_.data(), longest, extra_.data(), longest, nullptr, 0);
    io_->rethrow();
    if (status != UNZ_OK)
        throw Exception(failure);
    const auto name = std::string_view(name_).substr(0, info.size_filename);
    const auto extra = std::span<const std::uint8_t>(extra_).first(info.size_file_extra);

    ZipEntry entry;
    entry.name = decodeZipName(
        {name, extra, static_cast<std::uint16_t>(info.version), static_cast<std::uint16_t>(info.flag)});
    entry.size = info.uncompressed_size;
    entry.packedSize = info.compressed_size;
    entry.crc = static_cast<std::uint32_t>(info.crc);
    entry.date = ZipDate::unpack(static_cast<std::uint32_t>(info.dosDate));
    entry.directory = entry.name.ends_with('/');
    entry.encrypted = (info.flag & encryptedFlags) != 0;
    entry.method = static_cast<std::uint16_t>(info.compression_method);
    entry.directoryPosition = position_;
    return entry;
}

void UnZipFile::extract(const Sink& sink) {
    const ZipEntry current = entry(E_UNZIP);
    openContent(current);
    try {
        readContent(current, sink);
    } catch (...) {
        unzCloseCurrentFile(handle_);
        throw;
    }
    unzCloseCurrentFile(handle_);
}

// minizip hands the content over as it lies in the archive. Restoring it here in large pieces, with one count
// and one checksum of 64-bit lengths, holds for every size of zlib's counters.
void UnZipFile::openContent(const ZipEntry& entry) {
    checkSupported(entry);
    int method = 0;
    int level = 0;
    const int status = unzOpenCurrentFile2(handle_, &method, &level, 1);
    io_->rethrow();
    if (status != UNZ_OK)
        throw Exception(status == UNZ_BADZIPFILE ? E_UNZIP_BAD : E_UNZIP);
}

void UnZipFile::readContent(const ZipEntry& entry, const Sink& sink) {
    std::uint64_t size = 0;
    uLong crc = 0;
    const Sink checked = [&](std::span<const std::uint8_t> piece) {
        size += piece.size();
        if (size > entry.size)
            throw Exception(E_UNZIP);
        crc = crc32(crc, piece.data(), static_cast<uInt>(piece.size()));
        sink(piece);
    };

    Inflater inflater(-MAX_WBITS, E_UNZIP);
    auto state = entry.method == stored ? Inflater::State::finished : Inflater::State::needsInput;
    Bytes block(pieceSize);
    for (;;) {
        const int count = unzReadCurrentFile(handle_, block.data(), static_cast<unsigned>(block.size()));
        io_->rethrow();
        if (count <= 0)
            break;
        auto input = std::span<const std::uint8_t>(block).first(static_cast<std::size_t>(count));
        if (entry.method == stored)
            checked(input);
        else if (state == Inflater::State::needsInput)
            state = inflater.run(input, checked);
    }
    if (state != Inflater::State::finished || size != entry.size || crc != entry.crc)
        throw Exception(E_UNZIP);
}

}  // namespace Corvane::Compression::detail
