// What an archive says about one of its entries.
#pragma once

#include <cstdint>
#include <string>

namespace Corvane::Compression {

// A date as zip archives keep it: local time, in steps of two seconds, from 1980 to 2107.
struct ZipDate {
    std::uint16_t year = 1980;
    std::uint8_t month = 1;
    std::uint8_t day = 1;
    std::uint8_t hour = 0;
    std::uint8_t minute = 0;
    std::uint8_t second = 0;

    // From and to the 32 bits of MS-DOS: the date in the upper half, the time in the lower. What is out of
    // range in a date to be packed moves to the nearest end; unpacking checks nothing.
    static ZipDate unpack(std::uint32_t packed) noexcept;
    std::uint32_t pack() const noexcept;

    bool isValid() const noexcept;
};

struct ZipEntry {
    // UTF-8, with "/" between folders; the one of a folder ends in "/".
    std::string name;
    std::uint64_t size = 0;
    std::uint64_t packedSize = 0;
    std::uint32_t crc = 0;
    ZipDate date;
    bool directory = false;
    bool encrypted = false;
    std::uint16_t method = 0;  // 0 stored, 8 deflated (APPNOTE.TXT 4.4.5)

    // Where in the archive's directory it is described, for UnZipFile::select().
    std::uint64_t directoryPosition = 0;
};

}  // namespace Corvane::Compression
