#include "core/moment.h"

#include "core/check.h"

#include <fmt/xchar.h>

namespace Corvane {
namespace {

SYSTEMTIME toSystemTime(const FILETIME& time) {
    SYSTEMTIME fields{};
    checkWin32(::FileTimeToSystemTime(&time, &fields), E_FILETIME_TO_SYSTEMTIME_CAST,
               L"FileTimeToSystemTime");
    return fields;
}

}  // namespace

std::wstring toUtcText(const FILETIME& time) {
    const SYSTEMTIME fields = toSystemTime(time);
    return fmt::format(L"{:04}-{:02}-{:02}T{:02}:{:02}:{:02}Z", fields.wYear, fields.wMonth, fields.wDay,
                       fields.wHour, fields.wMinute, fields.wSecond);
}

SYSTEMTIME toLocalTime(const FILETIME& time) {
    FILETIME local{};
    checkWin32(::FileTimeToLocalFileTime(&time, &local), E_FILETIME_TO_LOCAL_CAST,
               L"FileTimeToLocalFileTime");
    return toSystemTime(local);
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
