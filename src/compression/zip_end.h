// The end of an archive: where its directory lies. minizip reads and writes entries; it does not find the
// zip64 records of an archive that lies behind other data, believes a number of entries that has only 16
// bits, and loses a comment when it adds to a zip64 archive.
#pragma once

#include "binary/bytes.h"
#include "compression/zip_storage.h"

#include <cstdint>
#include <optional>
#include <span>

namespace Corvane::Compression::detail {

struct ZipEnd {
    std::uint64_t begin = 0;      // of the archive in its storage; what lies before is not its
    std::uint64_t directory = 0;  // from there on; so is everything that the archive says
    std::uint64_t size = 0;       // of the directory
    std::uint64_t entries = 0;    // as they are counted, which may be too few
    Bytes comment;
};

// Nothing when there is no end record. Throws what the storage throws.
std::optional<ZipEnd> readEnd(ZipStorage& storage);

// The zip64 records (APPNOTE.TXT 4.3.14, 4.3.15), which lie behind the directory.
Bytes zip64Records(const ZipEnd& end);

// The end record, with the zip64 records before it where it cannot hold the numbers (APPNOTE.TXT 4.3.14 to
// 4.3.16).
Bytes endRecords(const ZipEnd& end);

// The directory that minizip wrote, of what it wrote on closing an archive without a comment.
std::span<const std::uint8_t> directoryIn(std::span<const std::uint8_t> closing) noexcept;

}  // namespace Corvane::Compression::detail
