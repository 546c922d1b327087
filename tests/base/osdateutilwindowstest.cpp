// Local time by today's offset of the zone. POSIX form: osdateutilposixtest.cpp.
#include <base/osdateex.h>
#include <base/osdateutil.h>

#include "expectchild.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <cstdint>
#include <iostream>
#include <string>

using Vn::OsDateEx;
using Vn::OsDateTypes;
using Vn::OsDateUtil;
using DateRep = OsDateTypes::DateRep;
using DateStruct = OsDateTypes::DateStruct;

namespace
{
/// Minutes to add to local time.
int biasNow()
{
    ::TIME_ZONE_INFORMATION zone;
    const ::DWORD kind = ::GetTimeZoneInformation(&zone);
    const ::LONG season = kind == TIME_ZONE_ID_DAYLIGHT   ? zone.DaylightBias
                          : kind == TIME_ZONE_ID_STANDARD ? zone.StandardBias
                                                          : 0;
    return static_cast<int>(zone.Bias + season);
}

std::int64_t ticksOf(DateStruct const& fields, OsDateTypes::TimeMode mode)
{
    DateRep result;
    EXPECT_TRUE(OsDateUtil::makeTime(fields.getYear(), fields.getMonth(), fields.getDay(), fields.getHour(),
                                     fields.getMinute(), fields.getSecond(), mode, result));
    return static_cast<std::int64_t>(result.getTicks());
}
}  // namespace

VN_CHILD(localTimeInAZone)
{
    const std::int64_t bias = std::int64_t{biasNow()} * 600000000;
    bool isRight = true;
    for (int month = 1; month <= 12; ++month) {
        const DateStruct given(2023, month, 15, 12, 34, 56.0, 0);
        const std::int64_t utc = ticksOf(given, OsDateTypes::UTCTime);
        isRight &= ticksOf(given, OsDateTypes::LocalTime) == utc + bias;
        const DateStruct local = OsDateUtil::convertToDateStruct(
            DateRep::fromTicks(static_cast<std::uint64_t>(utc)), OsDateTypes::LocalTime);
        isRight &= ticksOf(local, OsDateTypes::UTCTime) == utc - bias;
    }
    std::cout << isRight << "\n";
    return testing::Test::HasFailure();
}

TEST(OsDateUtilZone, localTimeHasTodaysOffset)
{
    for (char const* zone : {"UTC", "Europe/Berlin", "America/New_York", "Asia/Kolkata"}) {
        const VnTest::ChildRun run = VnTest::Child("localTimeInAZone").with("TZ", zone).run();
        EXPECT_EQ(run.out, "1\n") << zone;
        EXPECT_EQ(run.exitCode, 0) << zone;
    }
}
