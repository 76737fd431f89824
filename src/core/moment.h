// The forms in which scripts see a moment, and back.
#pragma once

#include <windows.h>

#include <string>

namespace Corvane {

// The moment in UTC as ISO 8601 text with a trailing Z: 2019-10-24T09:05:00Z.
// Throws Win32Exception E_FILETIME_TO_SYSTEMTIME_CAST.
std::wstring toUtcText(const FILETIME& time);

// The moment on the local clock, by the offset to UTC that is in force today.
// Throws Win32Exception E_FILETIME_TO_LOCAL_CAST or E_FILETIME_TO_SYSTEMTIME_CAST.
SYSTEMTIME toLocalTime(const FILETIME& time);

// The moment of a time on the local clock. Throws as toLocalTime() does.
FILETIME fromLocalTime(const SYSTEMTIME& local);

}  // namespace Corvane
