#include "compression/zip_end.h"

#include "compression/little_endian.h"
#include "core/errors.h"
#include "core/exception.h"

#include <algorithm>
#include <array>
#include <span>

namespace Corvane::Compression::detail {
namespace {

constexpr std::size_t longestComment = 0xFFFF;

// APPNOTE.TXT 4.3.16: the end record without the comment, and where its fields lie.
constexpr std::size_t endSize = 22;
constexpr std::array<std::uint8_t, 4> endMark{'P', 'K', 5, 6};
constexpr std::size_t directorySizeAt = 12;
constexpr std::size_t directoryOffsetAt = 16;
constexpr std::size_t commentSizeAt = 20;

constexpr std::uint64_t countInZip64 = 0xFFFF;
constexpr std::size_t locatorSize = 20;
constexpr std::array<std::uint8_t, 4> locatorMark{'P', 'K', 6, 7};

void append(Bytes& bytes, std::uint64_t number, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i) {
        bytes.push_back(static_cast<std::uint8_t>(number >> 8 * i));
    }
}

// APPNOTE.TXT 4.3.14 and 4.3.15: the zip64 end record and its locator, for a directory that ends at `end`.
Bytes zip64End(std::uint64_t entries, std::uint64_t directorySize, std::uint64_t directoryOffset) {
    constexpr std::uint64_t version = 45;  // 4.5, the first one with zip64
    Bytes bytes{'P', 'K', 6, 6};
    append(bytes, 44, 8);  // what follows of the record
    append(bytes, version, 2);
    append(bytes, version, 2);
    append(bytes, 0, 8);  // two numbers of disks
    append(bytes, entries, 8);
    append(bytes, entries, 8);
    append(bytes, directorySize, 8);
    append(bytes, directoryOffset, 8);
    bytes.insert(bytes.end(), locatorMark.begin(), locatorMark.end());
    append(bytes, 0, 4);
    append(bytes, directoryOffset + directorySize, 8);  // of the record above
    append(bytes, 1, 4);                                // disks
    return bytes;
}

std::uint64_t commentSize(std::span<const std::uint8_t> record) noexcept {
    return littleEndian(record.subspan(commentSizeAt, 2));
}

// Whether that mark stands at `position`.
bool standsAt(ZipIo& io, std::uint64_t position, const std::array<std::uint8_t, 4>& mark) {
    std::array<std::uint8_t, 4> found{};
    return io.seek(position, ZLIB_FILEFUNC_SEEK_SET) && io.read(found) == found.size() && found == mark;
}

}  // namespace

bool isEmptyArchive(ZipStorage& storage) {
    constexpr std::array<std::uint8_t, commentSizeAt> empty{'P', 'K', 5, 6};
    std::array<std::uint8_t, endSize> record{};
    return storage.read(0, record) == record.size() &&
           std::equal(empty.begin(), empty.end(), record.begin()) &&
           storage.size() == endSize + commentSize(record);
}

Bytes archiveComment(ZipStorage& storage) {
    const std::uint64_t size = storage.size();
    Bytes tail(static_cast<std::size_t>(std::min<std::uint64_t>(size, endSize + longestComment)));
    tail.resize(storage.read(size - tail.size(), tail));
    const auto end = std::find_end(tail.begin(), tail.end(), endMark.begin(), endMark.end());
    const std::span<const std::uint8_t> record(end, tail.end());
    if (record.size() < endSize) {
        return {};
    }
    const auto rest = record.subspan(endSize);
    const auto comment =
        rest.first(static_cast<std::size_t>(std::min<std::uint64_t>(commentSize(record), rest.size())));
    return {comment.begin(), comment.end()};
}

void completeEnd(ZipIo& io, std::uint64_t entries, const Bytes& comment) {
    // The rest need not be read, which not every output can be.
    if (entries < countInZip64 && comment.empty()) {
        return;
    }
    std::array<std::uint8_t, endSize> record{};
    const std::uint64_t position = io.position() - endSize;
    if (!io.seek(position, ZLIB_FILEFUNC_SEEK_SET) || io.read(record) != record.size() ||
        !std::equal(endMark.begin(), endMark.end(), record.begin())) {
        throw Exception(E_ZIP);
    }
    Bytes end;
    // Beyond 4 GiB minizip has written them, and from version 1.3 on for many entries too.
    if (entries >= countInZip64 && !standsAt(io, position - locatorSize, locatorMark)) {
        const auto number = [&](std::size_t at) {
            return littleEndian(std::span<const std::uint8_t>(record).subspan(at, 4));
        };
        end = zip64End(entries, number(directorySizeAt), number(directoryOffsetAt));
    }
    end.insert(end.end(), record.begin(), record.begin() + commentSizeAt);
    append(end, comment.size(), 2);
    end.insert(end.end(), comment.begin(), comment.end());
    io.seek(position, ZLIB_FILEFUNC_SEEK_SET);
    io.write(end);
    io.flush();
}

}  // namespace Corvane::Compression::detail
