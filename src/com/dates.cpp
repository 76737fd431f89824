#include "com/dates.h"

#include "core/moment.h"
#include "core/system_exception.h"

#include <oleauto.h>

namespace Corvane::Com {

DATE toDate(const FILETIME& time) {
    SYSTEMTIME local = toLocalTime(time);
    DATE date = 0;
    if (!::SystemTimeToVariantTime(&local, &date)) {
        throw Win32Exception(E_SYSTEMTIME_TO_LOCAL_CAST, ERROR_INVALID_PARAMETER);
    }
    return date;
}

FILETIME fromDate(DATE date) {
    SYSTEMTIME local{};
    if (!::VariantTimeToSystemTime(date, &local)) {
        throw Win32Exception(E_SYSTEMTIME_TO_LOCAL_CAST, ERROR_INVALID_PARAMETER);
    }
    return fromLocalTime(local);
}

}  // namespace Corvane::Com
