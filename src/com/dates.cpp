#include "com/dates.h"

#include "core/check.h"
#include "core/moment.h"

#include <oleauto.h>

namespace Corvane::Com {

DATE toDate(const FILETIME& time) {
    SYSTEMTIME local = toLocalTime(time);
    DATE date = 0;
    // Neither of these calls leaves an error of its own.
    if (!::SystemTimeToVariantTime(&local, &date)) {
        detail::failWin32(E_SYSTEMTIME_TO_LOCAL_CAST, L"SystemTimeToVariantTime", ERROR_INVALID_PARAMETER);
    }
    return date;
}

FILETIME fromDate(DATE date) {
    SYSTEMTIME local{};
    if (!::VariantTimeToSystemTime(date, &local)) {
        detail::failWin32(E_SYSTEMTIME_TO_LOCAL_CAST, L"VariantTimeToSystemTime", ERROR_INVALID_PARAMETER);
    }
    return fromLocalTime(local);
}

}  // namespace Corvane::Com
