#include "com/runtime/dates.h"

#include "core/check.h"
#include "core/moment.h"

#include <oleauto.h>

#include <algorithm>
#include <cstdint>

namespace Corvane::Com {
namespace {

constexpr std::int64_t ticksPerSecond = 10'000'000;
constexpr std::int64_t secondsPerDay = 86'400;
// From the beginning of 1601, where files count from, to 30 December 1899, where automation does.
constexpr std::int64_t daysBetween = 109'205;
// 31 December 9999, 23:59:59, in seconds from the beginning of 1601.
constexpr std::int64_t lastSecond = (2'958'465 + daysBetween + 1) * secondsPerDay - 1;

}  // namespace

DATE toDate(const FILETIME& time) {
    const auto ticks = static_cast<std::int64_t>(toTicks(time));
    if (ticks < 0)
        failWin32(E_FILETIME_TO_SYSTEMTIME_CAST, L"toDate", ERROR_INVALID_PARAMETER);
    // One day more keeps what is before 1601 on the local clock from being negative.
    const std::int64_t seconds =
        std::min((ticks / ticksPerSecond + localOffset() / ticksPerSecond), lastSecond) + secondsPerDay;
    const std::int64_t day = seconds / secondsPerDay - 1 - daysBetween;
    const double fraction = static_cast<double>(seconds % secondsPerDay) / secondsPerDay;
    // The whole part counts days, in both directions; the time of the day is the fraction without its sign.
    return static_cast<double>(day) + (day < 0 ? -fraction : fraction);
}

FILETIME fromDate(DATE date) {
    SYSTEMTIME local{};
    // This call leaves no error of its own.
    if (!::VariantTimeToSystemTime(date, &local))
        failWin32(E_SYSTEMTIME_TO_LOCAL_CAST, L"VariantTimeToSystemTime", ERROR_INVALID_PARAMETER);
    return fromLocalTime(local);
}

}  // namespace Corvane::Com
