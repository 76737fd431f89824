// Moments as automation counts them: days on the local clock.
#pragma once

#include <windows.h>

#include <oaidl.h>

namespace Corvane::Com {

// Throws Win32Exception E_FILETIME_TO_LOCAL_CAST, E_FILETIME_TO_SYSTEMTIME_CAST, E_SYSTEMTIME_TO_LOCAL_CAST.
DATE toDate(const FILETIME& time);

// Throws likewise for a date that automation does not have.
FILETIME fromDate(DATE date);

}  // namespace Corvane::Com
