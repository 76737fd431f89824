// The forms in which scripts see a moment, and back.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

namespace Corvane {

// Units of 100 ns since the beginning of 1601, and back.
constexpr std::uint64_t toTicks(const FILETIME& time) noexcept {
    return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
}

constexpr FILETIME fromTicks(std::uint64_t ticks) noexcept {
    return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

// The moment in which it is called.
inline std::uint64_t currentTicks() noexcept {
    FILETIME now;
    ::GetSystemTimeAsFileTime(&now);
    return toTicks(now);
}

// The moment in UTC as ISO 8601 text with a trailing Z: 2019-10-24T09:05:00Z.
// Throws Win32Exception E_FILETIME_TO_SYSTEMTIME_CAST.
std::wstring toUtcText(const FILETIME& time);

// How far the local clock is ahead of UTC, in units of 100 ns, by the rules that are in force today; negative
// west of Greenwich. Throws Win32Exception E_FILETIME_TO_LOCAL_CAST.
std::int64_t localOffset();

// The moment of a time on the local clock, by the same rules. Throws Win32Exception E_FILETIME_TO_LOCAL_CAST
// or E_FILETIME_TO_SYSTEMTIME_CAST.
FILETIME fromLocalTime(const SYSTEMTIME& local);

}  // namespace Corvane
