// Dates of scripts. Run in zones east and west of Greenwich, whose distance CORVANE_ZONE_MINUTES tells.
#include "com/runtime/dates.h"

#include "core/moment.h"
#include "support.h"

#include <array>
#include <cstdlib>

using namespace Corvane;
using namespace Corvane::Com;
using namespace Corvane::Test;

namespace {

double zone() {
    std::array<char, 16> minutes{};
    return ::GetEnvironmentVariableA("CORVANE_ZONE_MINUTES", minutes.data(), minutes.size()) != 0
               ? std::atof(minutes.data()) / 1440
               : 0;
}

TEST(Dates, AreLocalToTheSecond) {
    // 2019-10-24T02:53:23.9Z is 43762 days from 1899-12-30, and some.
    const FILETIME time = fromTicks(132163592039000000);
    EXPECT_NEAR(toDate(time), 43762 + (2 * 3600 + 53 * 60 + 23) / 86400.0 + zone(), 1e-9);
    EXPECT_EQ(toTicks(fromDate(toDate(time))), 132163592030000000u);
}

TEST(Dates, TheEndsOfTheCalendarAreTheNearestDates) {
    // Excel's and automation's last second is 2958465.99998842592; 1601-01-01 is day -109205.
    const FILETIME last = fromTicks(2650467743990000000);  // 9999-12-31T23:59:59Z
    EXPECT_NEAR(toDate(last), zone() > 0 ? 2958465 + 86399 / 86400.0 : 2958465 + 86399 / 86400.0 + zone(),
                1e-9);
    // Before 1899-12-30 the time of the day is counted away from zero.
    const double first = zone() < 0 ? -109206 - (1 + zone()) : -109205 - zone();
    EXPECT_NEAR(toDate(fromTicks(0)), first, 1e-9);
    EXPECT_EQ(errorCode([] { toDate(fromTicks(~std::uint64_t{0})); }), E_FILETIME_TO_SYSTEMTIME_CAST.code);
}

}  // namespace
