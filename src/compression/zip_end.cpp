#include "compression/zip_end.h"

#include "compression/little_endian.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace Corvane::Compression::detail {
namespace {

constexpr std::size_t longestComment = 0xFFFF;
constexpr std::size_t endSize = 22;  // without the comment
constexpr std::size_t locatorSize = 20;
constexpr std::size_t zip64EndSize = 56;
constexpr std::string_view endMark("PK\5\6");
constexpr std::string_view locatorMark("PK\6\7");
constexpr std::string_view zip64EndMark("PK\6\6");

using Record = std::span<const std::uint8_t>;

std::uint64_t numberAt(Record record, std::size_t at, std::size_t size) noexcept {
    return littleEndian(record.subspan(at, size));
}

void append(Bytes& bytes, std::uint64_t number, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i)
        bytes.push_back(static_cast<std::uint8_t>(number >> 8 * i));
}

bool begins(Record record, std::string_view mark) noexcept {
    return record.size() >= mark.size() && std::equal(mark.begin(), mark.end(), record.begin());
}

// `size` bytes at `position`, or nothing where another mark stands.
Bytes recordAt(ZipStorage& storage, std::uint64_t position, std::size_t size, std::string_view mark) {
    Bytes record(size);
    const bool found = storage.read(position, record) == size && begins(record, mark);
    return found ? record : Bytes();
}

// Of the zip64 record that a locator leads to. What lies before the archive is not counted in it, but the
// record ends where the locator begins.
bool readZip64(ZipStorage& storage, std::uint64_t locatorAt, ZipEnd& end, std::uint64_t& directoryEnd) {
    const Bytes locator = recordAt(storage, locatorAt, locatorSize, locatorMark);
    if (locator.empty())
        return false;
    std::uint64_t position = numberAt(locator, 8, 8);
    Bytes record = recordAt(storage, position, zip64EndSize, zip64EndMark);
    if (record.empty() && locatorAt >= zip64EndSize) {
        position = locatorAt - zip64EndSize;
        record = recordAt(storage, position, zip64EndSize, zip64EndMark);
    }
    if (record.empty())
        return false;
    end.entries = numberAt(record, 32, 8);
    end.size = numberAt(record, 40, 8);
    end.directory = numberAt(record, 48, 8);
    directoryEnd = position;
    return true;
}

}  // namespace

Bytes zip64Records(const ZipEnd& end) {
    constexpr std::uint64_t version = 45;  // 4.5, the first one with zip64
    Bytes bytes(zip64EndMark.begin(), zip64EndMark.end());
    append(bytes, zip64EndSize - 12, 8);  // what follows of the record
    append(bytes, version, 2);
    append(bytes, version, 2);
    append(bytes, 0, 8);  // two numbers of disks
    append(bytes, end.entries, 8);
    append(bytes, end.entries, 8);
    append(bytes, end.size, 8);
    append(bytes, end.directory, 8);
    bytes.insert(bytes.end(), locatorMark.begin(), locatorMark.end());
    append(bytes, 0, 4);
    append(bytes, end.directory + end.size, 8);  // of the record above
    append(bytes, 1, 4);                         // disks
    return bytes;
}

namespace {

// From the last mark of an end record on, among the last `most` bytes; empty when there is none.
Bytes lastEnd(ZipStorage& storage, std::size_t most) {
    const std::uint64_t size = storage.size();
    Bytes tail(static_cast<std::size_t>(std::min<std::uint64_t>(size, most)));
    tail.resize(storage.read(size - tail.size(), tail));
    tail.erase(tail.begin(), std::find_end(tail.begin(), tail.end(), endMark.begin(), endMark.end()));
    return tail;
}

}  // namespace

std::optional<ZipEnd> readEnd(ZipStorage& storage) {
    const std::uint64_t size = storage.size();
    // Most archives have no comment.
    Bytes record = lastEnd(storage, endSize);
    if (record.empty())
        record = lastEnd(storage, endSize + longestComment);
    if (record.size() < endSize)
        return std::nullopt;
    ZipEnd end;
    std::uint64_t directoryEnd = size - record.size();
    if (directoryEnd < locatorSize || !readZip64(storage, directoryEnd - locatorSize, end, directoryEnd)) {
        end.entries = numberAt(record, 10, 2);
        end.size = numberAt(record, 12, 4);
        end.directory = numberAt(record, 16, 4);
    }
    if (end.directory > directoryEnd || end.size > directoryEnd - end.directory)
        return std::nullopt;
    end.begin = directoryEnd - end.directory - end.size;
    const Record comment = Record(record).subspan(endSize);
    const auto commentSize = static_cast<std::size_t>(numberAt(record, 20, 2));
    end.comment.assign(comment.begin(),
                       comment.begin() + static_cast<std::ptrdiff_t>(std::min(commentSize, comment.size())));
    return end;
}

Bytes endRecords(const ZipEnd& end) {
    constexpr std::uint64_t in16 = 0xFFFF;
    constexpr std::uint64_t in32 = 0xFFFFFFFF;
    const bool isZip64 = end.entries >= in16 || end.size >= in32 || end.directory >= in32;
    Bytes bytes = isZip64 ? zip64Records(end) : Bytes();
    bytes.insert(bytes.end(), endMark.begin(), endMark.end());
    append(bytes, 0, 4);  // two numbers of disks
    append(bytes, std::min(end.entries, in16), 2);
    append(bytes, std::min(end.entries, in16), 2);
    append(bytes, std::min(end.size, in32), 4);
    append(bytes, std::min(end.directory, in32), 4);
    append(bytes, end.comment.size(), 2);
    bytes.insert(bytes.end(), end.comment.begin(), end.comment.end());
    return bytes;
}

std::span<const std::uint8_t> directoryIn(std::span<const std::uint8_t> closing) noexcept {
    return closing.first(static_cast<std::size_t>(numberAt(closing.last(endSize), 12, 4)));
}

}  // namespace Corvane::Compression::detail
