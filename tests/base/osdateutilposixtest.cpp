// Local time by the zone's rules at each date. Windows form: osdateutilwindowstest.cpp.
#include <base/osdateex.h>
#include <base/osdateutil.h>

#include <gtest/gtest.h>

#include <time.h>

#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>

using Vn::OsDateEx;
using Vn::OsDateTypes;
using Vn::OsDateUtil;
using DateRep = OsDateTypes::DateRep;
using DateStruct = OsDateTypes::DateStruct;

namespace
{
constexpr std::int64_t secondsTo1970 = 11644473600;

const struct Row
{
    char const* zone;
    std::int64_t second;  ///< since 1970
    int year, month, day, hour, minute, localSecond, dayOfWeek;
    bool isUnique;  ///< no other moment has the same local time
} rows[] = {
#include "../reference/zones.inc"
};

/// The zone of the process while it lives.
class Zone
{
public:
    explicit Zone(std::string const& name)
    {
        if (char const* before = std::getenv("TZ"))
            _before = before;
        ::setenv("TZ", name.c_str(), 1);
    }

    ~Zone()
    {
        if (_before)
            ::setenv("TZ", _before->c_str(), 1);
        else
            ::unsetenv("TZ");
        ::tzset();
    }

private:
    std::optional<std::string> _before;
};

DateRep atSecond(std::int64_t second, unsigned ticks = 0)
{
    return DateRep::fromTicks(static_cast<std::uint64_t>(second + secondsTo1970) * 10000000 + ticks);
}

DateRep fromLocal(int year, int month, int day, int hour, int minute, double second)
{
    DateRep result;
    EXPECT_TRUE(OsDateUtil::makeTime(year, month, day, hour, minute, second, OsDateTypes::LocalTime, result));
    return result;
}

void expectFields(DateStruct const& fields, Row const& row)
{
    EXPECT_EQ(fields.getYear(), row.year);
    EXPECT_EQ(fields.getMonth(), row.month);
    EXPECT_EQ(fields.getDay(), row.day);
    EXPECT_EQ(fields.getHour(), row.hour);
    EXPECT_EQ(fields.getMinute(), row.minute);
    EXPECT_EQ(fields.getSecond(), row.localSecond);
    EXPECT_EQ(fields.getDayOfWeek(), row.dayOfWeek);
}

/// What the C library makes of a local time.
std::int64_t mktimeOf(int year, int month, int day, int hour, int minute, int second)
{
    ::tm fields = {};
    fields.tm_year = year - 1900;
    fields.tm_mon = month - 1;
    fields.tm_mday = day;
    fields.tm_hour = hour;
    fields.tm_min = minute;
    fields.tm_sec = second;
    fields.tm_isdst = -1;
    return ::mktime(&fields);
}
}  // namespace

TEST(OsDateUtilZone, localTimeFollowsTheRulesOfItsDate)
{
    for (Row const& row : rows) {
        SCOPED_TRACE(std::string(row.zone) + " " + std::to_string(row.second));
        const Zone zone(row.zone);
        const DateStruct fields = OsDateUtil::convertToDateStruct(atSecond(row.second), OsDateTypes::LocalTime);
        expectFields(fields, row);
        const DateRep back =
            fromLocal(row.year, row.month, row.day, row.hour, row.minute, static_cast<double>(row.localSecond));
        if (row.isUnique) {
            EXPECT_EQ(back.getTicks(), atSecond(row.second).getTicks());
        } else {
            expectFields(OsDateUtil::convertToDateStruct(back, OsDateTypes::LocalTime), row);
        }
        if (testing::Test::HasFailure())
            break;
    }
}

TEST(OsDateUtilZone, utcIsTheSameInEachZone)
{
    for (char const* name : {"UTC", "CET-1", "EST5", "Asia/Kolkata"}) {
        SCOPED_TRACE(name);
        const Zone zone(name);
        DateRep made;
        ASSERT_TRUE(OsDateUtil::makeTime(2012, 12, 14, 4, 26, 40.0, OsDateTypes::UTCTime, made));
        EXPECT_EQ(made.getTicks(), atSecond(1355459200).getTicks());
        const DateStruct fields = OsDateUtil::convertToDateStruct(made, OsDateTypes::UTCTime);
        EXPECT_EQ(fields.getDay(), 14);
        EXPECT_EQ(fields.getHour(), 4);
        EXPECT_EQ(fields.getMinute(), 26);
    }
}

TEST(OsDateUtilZone, aSkippedTimeIsTakenAsMktimeTakesIt)
{
    const struct
    {
        char const* zone;
        int year, month, day, hour, minute;
    } table[] = {
        {"Europe/Berlin", 2023, 3, 26, 2, 30},
        {"America/New_York", 2023, 3, 12, 2, 0},
        {"Pacific/Apia", 2011, 12, 30, 12, 0},
        {"Australia/Lord_Howe", 2022, 10, 2, 2, 15},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.zone);
        const Zone zone(row.zone);
        const DateRep made = fromLocal(row.year, row.month, row.day, row.hour, row.minute, 7.5);
        EXPECT_EQ(made.getTicks(),
                  atSecond(mktimeOf(row.year, row.month, row.day, row.hour, row.minute, 7), 5000000).getTicks());
    }
}

TEST(OsDateUtilZone, theFractionGoesAlong)
{
    const Zone zone("America/St_Johns");
    const DateRep made = fromLocal(2011, 7, 1, 12, 0, 30.125);
    EXPECT_EQ(made.getTicks() % 10000000, 1250000u);
    EXPECT_EQ(OsDateUtil::convertToDateStruct(made, OsDateTypes::LocalTime).getSecond(), 30.125);
}

TEST(OsDateUtilZone, theSecondBefore1970IsATime)
{
    const Zone zone("UTC");  // its count is the one by which the C library tells a failure
    EXPECT_EQ(fromLocal(1969, 12, 31, 23, 59, 59.0).getTicks(), atSecond(-1).getTicks());
}

TEST(OsDateUtilZone, theEndsOfTheRangeAreKept)
{
    {
        const Zone west("EST5");
        EXPECT_THROW(OsDateUtil::convertToDateStruct(DateRep::fromTicks(0), OsDateTypes::LocalTime),
                     OsDateEx::ExInvalidDate);
        EXPECT_EQ(fromLocal(1601, 1, 1, 0, 0, 0.0).getTicks(), 5 * UINT64_C(36000000000));
    }
    const Zone east("CET-1");
    DateRep result(1, 2);
    EXPECT_FALSE(OsDateUtil::makeTime(1601, 1, 1, 0, 59, 59.0, OsDateTypes::LocalTime, result));
    EXPECT_EQ(result.getHigh(), 1u);
    EXPECT_EQ(fromLocal(1601, 1, 1, 1, 0, 0.0).getTicks(), 0u);
    EXPECT_THROW(OsDateUtil::convertToDateStruct(DateRep::fromTicks(INT64_MAX), OsDateTypes::LocalTime),
                 OsDateEx::ExInvalidDate);
    EXPECT_THROW(OsDateUtil::convertToDateStruct(DateRep(), OsDateTypes::LocalTime), OsDateEx::ExInvalidDate);
    EXPECT_EQ(
        OsDateUtil::convertToDateStruct(fromLocal(30827, 12, 31, 23, 59, 59.0), OsDateTypes::LocalTime).getYear(),
        30827);
}
