#include "compression/zip_entry.h"

#include <chrono>

namespace Corvane::Compression {
namespace {

constexpr std::uint32_t firstYear = 1980;
constexpr std::uint32_t lastYear = firstYear + 127;

std::uint8_t bits(std::uint32_t packed, int shift, std::uint32_t mask) noexcept {
    return static_cast<std::uint8_t>(packed >> shift & mask);
}

}  // namespace

ZipDate ZipDate::unpack(std::uint32_t packed) noexcept {
    ZipDate date;
    date.year = static_cast<std::uint16_t>(firstYear + (packed >> 25));
    date.month = bits(packed, 21, 0x0F);
    date.day = bits(packed, 16, 0x1F);
    date.hour = bits(packed, 11, 0x1F);
    date.minute = bits(packed, 5, 0x3F);
    date.second = static_cast<std::uint8_t>(bits(packed, 0, 0x1F) * 2);
    return date;
}

std::uint32_t ZipDate::pack() const noexcept {
    if (year < firstYear)
        return ZipDate().pack();
    if (year > lastYear)
        return ZipDate{lastYear, 12, 31, 23, 59, 58}.pack();
    return (year - firstYear) << 25 | std::uint32_t{month} << 21 | std::uint32_t{day} << 16 |
           std::uint32_t{hour} << 11 | std::uint32_t{minute} << 5 | std::uint32_t{second} / 2;
}

bool ZipDate::isValid() const noexcept {
    const std::chrono::year_month_day calendar{std::chrono::year(year), std::chrono::month(month),
                                               std::chrono::day(day)};
    return calendar.ok() && hour < 24 && minute < 60 && second < 60;
}

}  // namespace Corvane::Compression
