#include "core/moment.h"

#include "core/check.h"

#include <fmt/format.h>

namespace Corvane {

std::wstring toUtcText(const FILETIME& time) {
    SYSTEMTIME fields{};
    checkWin32(::FileTimeToSystemTime(&time, &fields), E_FILETIME_TO_SYSTEMTIME_CAST,
               L"FileTimeToSystemTime");
    // Formatting wide text would instantiate the whole library a second time.
    const std::string text = fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}Z", fields.wYear, fields.wMonth,
                                         fields.wDay, fields.wHour, fields.wMinute, fields.wSecond);
    return {text.begin(), text.end()};
}

std::int64_t localOffset() {
    // Any moment does that has a local time everywhere.
    const std::uint64_t moment = currentTicks();
    const FILETIME time = fromTicks(moment);
    FILETIME local{};
    checkWin32(::FileTimeToLocalFileTime(&time, &local), E_FILETIME_TO_LOCAL_CAST,
               L"FileTimeToLocalFileTime");
    return static_cast<std::int64_t>(toTicks(local) - moment);
}

FILETIME fromLocalTime(const SYSTEMTIME& local) {
    FILETIME localTime{};
    FILETIME time{};
    checkWin32(::SystemTimeToFileTime(&local, &localTime), E_FILETIME_TO_SYSTEMTIME_CAST,
               L"SystemTimeToFileTime");
    checkWin32(::LocalFileTimeToFileTime(&localTime, &time), E_FILETIME_TO_LOCAL_CAST,
               L"LocalFileTimeToFileTime");
    return time;
}

}  // namespace Corvane
