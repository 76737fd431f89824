#include "compression/zip_disk_date.h"

namespace Corvane::Compression {
namespace {

ZipDate zipDateOf(const SYSTEMTIME& time) noexcept {
    return {time.wYear,
            static_cast<std::uint8_t>(time.wMonth),
            static_cast<std::uint8_t>(time.wDay),
            static_cast<std::uint8_t>(time.wHour),
            static_cast<std::uint8_t>(time.wMinute),
            static_cast<std::uint8_t>(time.wSecond)};
}

}  // namespace

std::optional<FILETIME> fileTimeOf(const ZipDate& date) noexcept {
    const SYSTEMTIME local{date.year, date.month, 0, date.day, date.hour, date.minute, date.second, 0};
    SYSTEMTIME utc{};
    FILETIME time{};
    if (!date.isValid() || !::TzSpecificLocalTimeToSystemTime(nullptr, &local, &utc) ||
        !::SystemTimeToFileTime(&utc, &time))
        return std::nullopt;
    return time;
}

ZipDate zipDateOf(const FILETIME& time) noexcept {
    SYSTEMTIME utc{};
    SYSTEMTIME local{};
    if (!::FileTimeToSystemTime(&time, &utc) || !::SystemTimeToTzSpecificLocalTime(nullptr, &utc, &local))
        return {};
    return zipDateOf(local);
}

ZipDate zipDateNow() noexcept {
    SYSTEMTIME local{};
    ::GetLocalTime(&local);
    return zipDateOf(local);
}

}  // namespace Corvane::Compression
