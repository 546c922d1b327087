// Dates beside a calendar that is counted out: cycles of 400 years, then years, then months, one after the other.
#include <base/osdateutil.h>

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <cmath>
#include <cstdint>

namespace
{
using Vn::OsDateTypes;
using Vn::OsDateUtil;
using Date = OsDateTypes::DateRep;

constexpr std::uint64_t ticksPerSecond = 10000000;
constexpr std::uint64_t ticksPerDay = 86400 * ticksPerSecond;
constexpr std::uint64_t daysOfACycle = 146097;

bool isLeap(int year)
{
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

int daysOf(int year, int month)
{
    constexpr int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && isLeap(year) ? 29 : days[month - 1];
}

/// Days since 1 January 1601, which begins a cycle.
std::uint64_t daysTo(int year, int month, int day)
{
    std::uint64_t days = static_cast<std::uint64_t>((year - 1601) / 400) * daysOfACycle;
    for (int passed = 1601 + (year - 1601) / 400 * 400; passed < year; ++passed)
        days += isLeap(passed) ? 366 : 365;
    for (int passed = 1; passed < month; ++passed)
        days += static_cast<std::uint64_t>(daysOf(year, passed));
    return days + static_cast<std::uint64_t>(day - 1);
}
}  // namespace

TEST(DateProperty, fieldsAreTheMomentThatCountingGives)
{
    EXPECT_TRUE(rc::check([] {
        const int year = *rc::gen::inRange(1590, 30840);
        const int month = *rc::gen::inRange(0, 14);
        const int day = *rc::gen::inRange(0, 33);
        const int hour = *rc::gen::inRange(0, 25);
        const int minute = *rc::gen::inRange(0, 61);
        const int milliseconds = *rc::gen::inRange(0, 60000);
        const bool isDate = year >= 1601 && year <= 30827 && month >= 1 && month <= 12 && day >= 1 &&
                            day <= daysOf(year, month) && hour < 24 && minute < 60;
        Date made;
        RC_ASSERT(OsDateUtil::makeTime(year, month, day, hour, minute, milliseconds / 1000.0, OsDateTypes::UTCTime,
                                       made) == isDate);
        if (!isDate)
            return;
        const std::uint64_t seconds =
            static_cast<std::uint64_t>(hour) * 3600 + static_cast<std::uint64_t>(minute) * 60;
        RC_ASSERT(made.getTicks() == daysTo(year, month, day) * ticksPerDay + seconds * ticksPerSecond +
                                         static_cast<std::uint64_t>(milliseconds) * 10000);
    }));
}

TEST(DateProperty, aMomentHasTheFieldsThatCountingGives)
{
    EXPECT_TRUE(rc::check([] {
        const std::uint64_t ticks = *rc::gen::inRange<std::uint64_t>(0, std::uint64_t{1} << 62) * 2 +
                                    *rc::gen::inRange<std::uint64_t>(0, 2);
        const OsDateTypes::DateStruct fields =
            OsDateUtil::convertToDateStruct(Date::fromTicks(ticks), OsDateTypes::UTCTime);
        const std::uint64_t days = ticks / ticksPerDay;
        RC_ASSERT(daysTo(fields.getYear(), fields.getMonth(), fields.getDay()) == days);
        RC_ASSERT(fields.getDay() >= 1 && fields.getDay() <= daysOf(fields.getYear(), fields.getMonth()));
        RC_ASSERT(fields.getDayOfWeek() == static_cast<int>((days + 1) % 7));  // the first day was a Monday
        const std::uint64_t milliseconds = ticks % ticksPerDay / 10000;
        RC_ASSERT(fields.getHour() == static_cast<int>(milliseconds / 3600000));
        RC_ASSERT(fields.getMinute() == static_cast<int>(milliseconds / 60000 % 60));
        RC_ASSERT(std::abs(fields.getSecond() - static_cast<double>(milliseconds % 60000) / 1000.0) < 1e-12);
    }));
}

TEST(DateProperty, momentsCompareAndDifferAsTheirTicks)
{
    EXPECT_TRUE(rc::check([] {
        const auto any = rc::gen::oneOf(rc::gen::inRange<std::uint64_t>(0, 100),
                                        rc::gen::inRange<std::uint64_t>(0, std::uint64_t{1} << 62));
        const std::uint64_t a = *any;
        const std::uint64_t b = *any;
        RC_ASSERT(OsDateUtil::compare(Date::fromTicks(a), Date::fromTicks(b)) == (a < b ? -1 : a > b ? 1 : 0));
        const double difference = static_cast<double>(static_cast<std::int64_t>(a - b)) / ticksPerSecond;
        RC_ASSERT(OsDateUtil::diff(Date::fromTicks(a), Date::fromTicks(b)) == difference ||
                  std::abs(OsDateUtil::diff(Date::fromTicks(a), Date::fromTicks(b)) - difference) <=
                      std::abs(difference) * 1e-15);
    }));
}
