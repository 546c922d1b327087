#include <base/oscalendar_p.h>
#include <base/osdateex.h>
#include <base/osdateutil.h>

#include "expectthrow.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <limits>
#include <optional>
#include <random>
#include <type_traits>

#if defined(_WIN32)
#    include "wine.h"
#endif

using Vn::OsCalendar;
using Vn::OsCalendarTime;
using Vn::OsDateEx;
using Vn::OsDateTypes;
using Vn::OsDateUtil;
using VnTest::expectThrow;
using DateRep = OsDateTypes::DateRep;
using DateStruct = OsDateTypes::DateStruct;

static_assert(OsDateTypes::UTCTime == 0 && OsDateTypes::LocalTime == 1);
static_assert(sizeof(DateRep) == 8 && std::is_trivially_copyable_v<DateRep>);

namespace
{
constexpr std::uint64_t ticksPerDay = UINT64_C(864000000000);
const DateRep untouched(1, 2);

/// Days before a year, its first day of the week, and its February.
const struct Year
{
    int year;
    int daysBefore;
    int dayOfWeek;
    int february;
} years[] = {
#include "../reference/years.inc"
};

const struct Moment
{
    std::uint64_t ticks;
    int year, month, day, hour, minute, second, milliseconds, dayOfWeek;
} moments[] = {
#include "../reference/moments.inc"
};

std::uint64_t ticksOf(int year, int month, int day, int hour, int minute, double second)
{
    DateRep result = untouched;
    EXPECT_TRUE(OsDateUtil::makeTime(year, month, day, hour, minute, second, OsDateTypes::UTCTime, result))
        << year << "-" << month << "-" << day;
    return result.getTicks();
}

bool isRefused(int year, int month, int day, int hour, int minute, double second,
               OsDateTypes::TimeMode mode = OsDateTypes::UTCTime)
{
    DateRep result = untouched;
    const bool made = OsDateUtil::makeTime(year, month, day, hour, minute, second, mode, result);
    if (!made) {
        EXPECT_EQ(result.getTicks(), untouched.getTicks()) << "the result was touched";
    }
    return !made;
}

DateStruct fieldsOf(std::uint64_t ticks)
{
    return OsDateUtil::convertToDateStruct(DateRep::fromTicks(ticks), OsDateTypes::UTCTime);
}

bool isWine()
{
#if defined(_WIN32)
    return VnTest::isWine();
#else
    return false;
#endif
}
}  // namespace

TEST(DateRep, holdsItsHighHalfFirst)
{
    const DateRep date(0x01234567, 0x89ABCDEF);
    EXPECT_EQ(date.getHigh(), 0x01234567u);
    EXPECT_EQ(date.getLow(), 0x89ABCDEFu);
    EXPECT_EQ(date.getTicks(), 0x0123456789ABCDEFu);
    EXPECT_EQ(DateRep::fromTicks(0xFEDCBA9876543210).getHigh(), 0xFEDCBA98u);
    EXPECT_EQ(DateRep::fromTicks(0xFEDCBA9876543210).getLow(), 0x76543210u);
    EXPECT_EQ(*reinterpret_cast<unsigned const*>(&date), 0x01234567u);
}

TEST(DateRep, hasAllBitsSetAtFirst)
{
    EXPECT_EQ(DateRep().getTicks(), 0xFFFFFFFFFFFFFFFFu);
}

TEST(DateStruct, keepsItsFieldsAsGiven)
{
    const DateStruct date(-1, 13, 32, 24, 60, 60.5, 7);
    EXPECT_EQ(date.getYear(), -1);
    EXPECT_EQ(date.getMonth(), 13);
    EXPECT_EQ(date.getDay(), 32);
    EXPECT_EQ(date.getHour(), 24);
    EXPECT_EQ(date.getMinute(), 60);
    EXPECT_EQ(date.getSecond(), 60.5);
    EXPECT_EQ(date.getDayOfWeek(), 7);
}

TEST(OsDateUtil, everyDayFrom1601To2400IsWhereTheCalendarHasIt)
{
    for (Year const& year : years) {
        SCOPED_TRACE(year.year);
        const int lengths[] = {31, year.february, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
        int days = year.daysBefore;
        for (int month = 1; month <= 12; ++month) {
            for (int day = 1; day <= lengths[month - 1]; ++day, ++days) {
                const std::uint64_t expected = static_cast<std::uint64_t>(days) * ticksPerDay;
                ASSERT_EQ(ticksOf(year.year, month, day, 0, 0, 0.0), expected);
                ASSERT_EQ(ticksOf(year.year, month, day, 23, 59, 59.999), expected + ticksPerDay - 10000);
                for (std::uint64_t ticks : {expected, expected + ticksPerDay - 1}) {
                    const DateStruct fields = fieldsOf(ticks);
                    ASSERT_EQ(fields.getYear(), year.year);
                    ASSERT_EQ(fields.getMonth(), month);
                    ASSERT_EQ(fields.getDay(), day);
                    ASSERT_EQ(fields.getDayOfWeek(), (year.dayOfWeek + days - year.daysBefore) % 7);
                }
            }
            // Wine lets a month run over into the next one.
            ASSERT_TRUE(isWine() || isRefused(year.year, month, lengths[month - 1] + 1, 0, 0, 0.0)) << month;
        }
    }
}

TEST(OsDateUtil, momentsOfTheWholeRangeHaveTheFieldsOfTheCalendar)
{
    for (Moment const& row : moments) {
        SCOPED_TRACE(row.ticks);
        const DateStruct fields = fieldsOf(row.ticks);
        EXPECT_EQ(fields.getYear(), row.year);
        EXPECT_EQ(fields.getMonth(), row.month);
        EXPECT_EQ(fields.getDay(), row.day);
        EXPECT_EQ(fields.getHour(), row.hour);
        EXPECT_EQ(fields.getMinute(), row.minute);
        EXPECT_EQ(fields.getSecond(), row.milliseconds * 0.001 + row.second);
        EXPECT_EQ(fields.getDayOfWeek(), row.dayOfWeek);
        if (row.year > 30827) {
            EXPECT_TRUE(isWine() || isRefused(row.year, row.month, row.day, row.hour, row.minute, row.second));
            continue;
        }
        EXPECT_EQ(ticksOf(row.year, row.month, row.day, row.hour, row.minute, fields.getSecond()),
                  row.ticks / 10000 * 10000);
    }
}

TEST(OsDateUtil, refusesWhatIsNoDateAndLeavesTheResult)
{
    const struct
    {
        char const* what;
        int year, month, day, hour, minute;
        double second;
        bool isTakenByWine;
    } table[] = {
        {"month 0", 2000, 0, 1, 0, 0, 0.0, false},
        {"month 13", 2000, 13, 1, 0, 0, 0.0, false},
        {"day 0", 2000, 1, 0, 0, 0, 0.0, false},
        {"day 32", 2000, 1, 32, 0, 0, 0.0, false},
        {"30 February", 2000, 2, 30, 0, 0, 0.0, true},
        {"29 February", 2001, 2, 29, 0, 0, 0.0, true},
        {"29 February 1900", 1900, 2, 29, 0, 0, 0.0, true},
        {"31 April", 2000, 4, 31, 0, 0, 0.0, true},
        {"hour 24", 2000, 1, 1, 24, 0, 0.0, false},
        {"hour -1", 2000, 1, 1, -1, 0, 0.0, false},
        {"minute 60", 2000, 1, 1, 0, 60, 0.0, false},
        {"minute -1", 2000, 1, 1, 0, -1, 0.0, false},
        {"second 60", 2000, 1, 1, 0, 0, 60.0, false},
        {"a second that rounds up to 1000 ms", 2000, 1, 1, 0, 0, 59.9996, false},
        {"any second that does", 2000, 1, 1, 0, 0, 0.9996, false},
        {"second -1.5", 2000, 1, 1, 0, 0, -1.5, false},
        {"second 65535", 2000, 1, 1, 0, 0, 65535.0, false},
        {"second 1e300", 2000, 1, 1, 0, 0, 1e300, false},
        {"second 2147483648", 2000, 1, 1, 0, 0, 2147483648.0, false},
        {"an infinite second", 2000, 1, 1, 0, 0, std::numeric_limits<double>::infinity(), false},
        {"no number", 2000, 1, 1, 0, 0, std::numeric_limits<double>::quiet_NaN(), false},
        {"year 1600", 1600, 12, 31, 23, 59, 59.0, false},
        {"year 30828", 30828, 1, 1, 0, 0, 0.0, true},
        {"year 0", 0, 1, 1, 0, 0, 0.0, false},
        {"year -1", -1, 1, 1, 0, 0, 0.0, false},
        {"year 65535", 65535, 1, 1, 0, 0, 0.0, false},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.what);
        if (row.isTakenByWine && isWine())
            continue;
        EXPECT_TRUE(isRefused(row.year, row.month, row.day, row.hour, row.minute, row.second));
        EXPECT_TRUE(
            isRefused(row.year, row.month, row.day, row.hour, row.minute, row.second, OsDateTypes::LocalTime));
    }
}

TEST(OsDateUtil, fieldsAreCutTo16BitsBeforeAnybodyLooks)
{
    const std::uint64_t expected = ticksOf(2000, 3, 4, 5, 6, 7.0);
    EXPECT_EQ(ticksOf(65536 + 2000, 3, 4, 5, 6, 7.0), expected);
    EXPECT_EQ(ticksOf(2000 - 65536, 3, 4, 5, 6, 7.0), expected);
    EXPECT_EQ(ticksOf(2000, 65536 * 3 + 3, 4, 5, 6, 7.0), expected);
    EXPECT_EQ(ticksOf(2000, 3, 65536 + 4, 5, 6, 7.0), expected);
    EXPECT_EQ(ticksOf(2000, 3, 4, 65536 + 5, 6, 7.0), expected);
    EXPECT_EQ(ticksOf(2000, 3, 4, 5, 65536 + 6, 7.0), expected);
    EXPECT_EQ(ticksOf(2000, 3, 4, 5, 6, 65536 + 7.0), expected);
}

TEST(OsDateUtil, theSecondIsCutAndItsFractionRoundedToTheMillisecond)
{
    const std::uint64_t minute = ticksOf(2000, 1, 1, 0, 0, 0.0);
    const struct
    {
        double second;
        unsigned milliseconds;  ///< since the minute
    } table[] = {
        {30.25, 30250},   {0.0004, 0},   {0.0006, 1},     {1.0004999, 1000}, {1.0005001, 1001},
        {59.9994, 59999}, {0.9994, 999}, {59.999, 59999}, {-0.5, 500},  // truncated to 0, less its floor of -1
        {-0.25, 750},     {7.0, 7000},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.second);
        EXPECT_EQ(ticksOf(2000, 1, 1, 0, 0, row.second) - minute, row.milliseconds * UINT64_C(10000));
    }
}

TEST(OsDateUtil, goesThereAndBackInEitherMode)
{
    for (OsDateTypes::TimeMode mode : {OsDateTypes::UTCTime, OsDateTypes::LocalTime}) {
        DateRep result;
        ASSERT_TRUE(OsDateUtil::makeTime(2000, 6, 15, 12, 34, 30.25, mode, result));
        const DateStruct fields = OsDateUtil::convertToDateStruct(result, mode);
        EXPECT_EQ(fields.getYear(), 2000);
        EXPECT_EQ(fields.getMonth(), 6);
        EXPECT_EQ(fields.getDay(), 15);
        EXPECT_EQ(fields.getHour(), 12);
        EXPECT_EQ(fields.getMinute(), 34);
        EXPECT_EQ(fields.getSecond(), 30.25);
        EXPECT_EQ(fields.getDayOfWeek(), 4);
    }
}

TEST(OsDateUtil, aCountBeyondTheRangeIsNoDate)
{
    for (std::uint64_t ticks : {UINT64_C(0xFFFFFFFFFFFFFFFF), UINT64_C(0x8000000000000000)}) {
        for (OsDateTypes::TimeMode mode : {OsDateTypes::UTCTime, OsDateTypes::LocalTime}) {
            expectThrow<OsDateEx::ExInvalidDate, std::runtime_error>(
                [=] { OsDateUtil::convertToDateStruct(DateRep::fromTicks(ticks), mode); },
                "Invalid date specified.");
        }
    }
    EXPECT_NO_THROW(OsDateUtil::convertToDateStruct(DateRep::fromTicks(INT64_MAX), OsDateTypes::UTCTime));
}

TEST(OsDateUtil, comparesAsUnsignedCounts)
{
    const std::uint64_t rising[] = {
        0, 1, 0xFFFFFFFF, 0x100000000, INT64_MAX, 0x8000000000000000, 0xFFFFFFFFFFFFFFFF};
    for (std::uint64_t a : rising)
        for (std::uint64_t b : rising)
            EXPECT_EQ(OsDateUtil::compare(DateRep::fromTicks(a), DateRep::fromTicks(b)), a < b   ? -1
                                                                                         : a > b ? 1
                                                                                                 : 0);
}

TEST(OsDateUtil, addsAndSubtractsThroughADouble)
{
    const std::uint64_t today = ticksOf(2026, 7, 1, 10, 0, 0.0);
    const DateRep date = DateRep::fromTicks(today);
    EXPECT_NEAR(OsDateUtil::diff(OsDateUtil::add(date, 10.0), date), 10.0, 16e-7);
    EXPECT_NEAR(OsDateUtil::diff(date, OsDateUtil::diff(date, 10.0)), 10.0, 16e-7);
    EXPECT_EQ(OsDateUtil::add(DateRep::fromTicks(1000), 1.5).getTicks(), 15001000u);
    EXPECT_EQ(OsDateUtil::diff(DateRep::fromTicks(15001000), 1.5).getTicks(), 1000u);
    EXPECT_EQ(OsDateUtil::add(DateRep::fromTicks(0), 0.25e-7).getTicks(), 0u);   // truncated
    EXPECT_EQ(OsDateUtil::add(DateRep::fromTicks(0), -0.75e-7).getTicks(), 0u);  // toward zero
    EXPECT_EQ(OsDateUtil::diff(DateRep::fromTicks(0), 2e-7).getTicks(), 0xFFFFFFFFFFFFFFFEu);
    // What a double of today's size doesn't hold is lost: the nearest multiple of 16 remains.
    const std::uint64_t moved = OsDateUtil::add(DateRep::fromTicks((today & ~UINT64_C(15)) + 5), 0.0).getTicks();
    EXPECT_EQ(moved, today & ~UINT64_C(15));
    // A count with its top bit set is negative.
    EXPECT_EQ(OsDateUtil::add(DateRep::fromTicks(0xFFFFFFFFFFFFFFFF), 1e-7).getTicks(), 0u);
}

TEST(OsDateUtil, aSumBeyond64BitsIsNoDate)
{
    const double infinity = std::numeric_limits<double>::infinity();
    for (double seconds : {1e12, 1e300, infinity, std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_EQ(OsDateUtil::add(DateRep::fromTicks(1), seconds).getTicks(), 0x8000000000000000u);
        EXPECT_EQ(OsDateUtil::diff(DateRep::fromTicks(1), seconds).getTicks(), 0x8000000000000000u);
    }
}

TEST(OsDateUtil, differenceIsTakenInIntegers)
{
    const auto seconds = [](std::uint64_t a, std::uint64_t b) {
        return OsDateUtil::diff(DateRep::fromTicks(a), DateRep::fromTicks(b));
    };
    EXPECT_EQ(seconds(15000000, 0), 15000000 * 1e-7);
    EXPECT_EQ(seconds(0, 15000000), -(15000000 * 1e-7));
    const std::uint64_t today = ticksOf(2026, 7, 1, 10, 0, 0.0);
    EXPECT_EQ(seconds(today + 1, today), 1e-7);  // which two doubles wouldn't tell apart
    EXPECT_EQ(seconds(today, today), 0.0);
    EXPECT_EQ(seconds(0, 0xFFFFFFFFFFFFFFFF), 1e-7);
    EXPECT_EQ(seconds(0x8000000000000000, 0), -9223372036854775808.0 * 1e-7);
}

TEST(OsDateUtil, currentTimeIsTheSystemsToTheMillisecond)
{
    const auto ticksNow = [] {
        const auto since = std::chrono::system_clock::now().time_since_epoch();
        const auto ticks = std::chrono::duration_cast<std::chrono::nanoseconds>(since).count() / 100;
        return static_cast<std::uint64_t>(ticks) + UINT64_C(116444736000000000);
    };
    const std::uint64_t tick = 500000;  // what a system's coarser clock may lag behind
    const std::uint64_t before = ticksNow();
    const std::uint64_t now = OsDateUtil::getCurrentTime().getTicks();
    const std::uint64_t after = ticksNow();
    EXPECT_GE(now, before - tick);
    EXPECT_LE(now, after + tick);
    EXPECT_EQ(now % 10000, 0u);
}

TEST(OsCalendar, agreesWithItselfAllOverTheRange)
{
    std::mt19937_64 random(30827);
    for (int i = 0; i < 100000; ++i) {
        const std::uint64_t ticks = random() % UINT64_C(9223149888000000000);  // the beginning of 30828
        const std::optional<OsCalendarTime> found = OsCalendar::fromTicks(ticks);
        ASSERT_TRUE(found);
        OsCalendarTime const& time = *found;
        ASSERT_EQ(OsCalendar::toTicks(time), ticks / 10000 * 10000);
        const DateStruct fields = fieldsOf(ticks);  // the system's own, where it has one
        ASSERT_EQ(fields.getYear(), time.year);
        ASSERT_EQ(fields.getMonth(), time.month);
        ASSERT_EQ(fields.getDay(), time.day);
        ASSERT_EQ(fields.getHour(), time.hour);
        ASSERT_EQ(fields.getMinute(), time.minute);
        ASSERT_EQ(fields.getSecond(), time.milliseconds * 0.001 + time.second);
        ASSERT_EQ(fields.getDayOfWeek(), time.dayOfWeek);
    }
}

TEST(OsCalendar, refusesWhatIsNoMoment)
{
    const OsCalendarTime good{2000, 2, 29, 23, 59, 59, 999, 0};
    const struct
    {
        char const* what;
        std::uint16_t OsCalendarTime::*field;
        std::uint16_t first;  ///< value that is refused
    } table[] = {
        {"year", &OsCalendarTime::year, 1600},      {"far year", &OsCalendarTime::year, 30828},
        {"month", &OsCalendarTime::month, 13},      {"month 0", &OsCalendarTime::month, 0},
        {"far month", &OsCalendarTime::month, 258}, {"day", &OsCalendarTime::day, 30},
        {"day 0", &OsCalendarTime::day, 0},         {"far day", &OsCalendarTime::day, 257},
        {"hour", &OsCalendarTime::hour, 24},        {"minute", &OsCalendarTime::minute, 60},
        {"second", &OsCalendarTime::second, 60},    {"milliseconds", &OsCalendarTime::milliseconds, 1000},
    };
    EXPECT_TRUE(OsCalendar::toTicks(good));
    for (auto const& row : table) {
        OsCalendarTime bad = good;
        bad.*row.field = row.first;
        EXPECT_FALSE(OsCalendar::toTicks(bad)) << row.what;
    }
    OsCalendarTime weekday = good;
    weekday.dayOfWeek = 9;
    EXPECT_EQ(OsCalendar::toTicks(weekday), OsCalendar::toTicks(good)) << "not looked at";
    EXPECT_TRUE(OsCalendar::fromTicks(0x7FFFFFFFFFFFFFFF));
    EXPECT_FALSE(OsCalendar::fromTicks(0x8000000000000000));
}
