// Moments as automation counts them: days on the local clock.
#pragma once

#include <windows.h>

#include <oaidl.h>

namespace Corvane::Com {

// The moment on the local clock, to the second. What local time would carry beyond the year 9999, which a
// date does not reach, is its last second. Throws Win32Exception E_FILETIME_TO_SYSTEMTIME_CAST for what is no
// moment to the system either, and E_FILETIME_TO_LOCAL_CAST.
DATE toDate(const FILETIME& time);

// Throws Win32Exception E_SYSTEMTIME_TO_LOCAL_CAST for a date that automation does not have, and likewise.
FILETIME fromDate(DATE date);

}  // namespace Corvane::Com
