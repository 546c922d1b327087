// Private to osdateutil.cpp and osdateutil_p.h; implemented in osdateutilposix.cpp, osdateutilwindows.cpp and osfilewindows.cpp.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace Vn
{

/// A moment in the fields of the Gregorian calendar, to the millisecond.
struct OsCalendarTime
{
    std::uint16_t year;   ///< 1601 to 30827 for a moment
    std::uint16_t month;  ///< 1 to 12
    std::uint16_t day;    ///< 1 to 31
    std::uint16_t hour;
    std::uint16_t minute;
    std::uint16_t second;
    std::uint16_t milliseconds;
    std::uint16_t dayOfWeek;  ///< 0 for Sunday; not looked at on the way to ticks
};

/// The Gregorian calendar in ticks of 100 nanoseconds since the beginning of 1601. Linux computes UTC with it; on
/// Windows, which has calls for that, the tests compare those calls with it.
///
///     1601-01-01 00:00:00.000  <->  0
///     1970-01-01 00:00:00.000  <->  116444736000000000
///
class OsCalendar
{
public:
    // Days have 86,400 seconds: leap seconds don't exist in this count, as on either system.
    static constexpr std::uint64_t ticksPerMillisecond = 10000;
    static constexpr std::uint64_t ticksPerSecond = 1000 * ticksPerMillisecond;
    static constexpr std::uint64_t ticksPerDay = 86400 * ticksPerSecond;
    static constexpr std::int64_t secondsTo1970 = 11644473600;  ///< since the beginning of 1601

    /// Nothing if the fields name no moment: 30 February, hour 24, second 60.
    static std::optional<std::uint64_t> toTicks(OsCalendarTime const& time)
    {
        if (!isMoment(time))
            return std::nullopt;
        const std::int64_t days = (std::chrono::sys_days(dateOf(time)) - epoch()).count();
        const std::uint64_t milliseconds =
            ((std::uint64_t{time.hour} * 60 + time.minute) * 60 + time.second) * 1000 + time.milliseconds;
        return static_cast<std::uint64_t>(days) * ticksPerDay + milliseconds * ticksPerMillisecond;
    }

    /// Nothing from 0x8000000000000000 on: as on Windows, which takes the ticks for a signed number. What exceeds the
    /// millisecond is cut off.
    static std::optional<OsCalendarTime> fromTicks(std::uint64_t ticks)
    {
        if (ticks >> 63 != 0)
            return std::nullopt;
        const std::chrono::sys_days day = epoch() + std::chrono::days(ticks / ticksPerDay);
        const std::chrono::year_month_day date(day);
        const auto milliseconds = static_cast<unsigned>(ticks % ticksPerDay / ticksPerMillisecond);
        OsCalendarTime time;
        time.year = static_cast<std::uint16_t>(static_cast<int>(date.year()));
        time.month = static_cast<std::uint16_t>(static_cast<unsigned>(date.month()));
        time.day = static_cast<std::uint16_t>(static_cast<unsigned>(date.day()));
        time.hour = static_cast<std::uint16_t>(milliseconds / 3600000);
        time.minute = static_cast<std::uint16_t>(milliseconds / 60000 % 60);
        time.second = static_cast<std::uint16_t>(milliseconds / 1000 % 60);
        time.milliseconds = static_cast<std::uint16_t>(milliseconds % 1000);
        time.dayOfWeek = static_cast<std::uint16_t>(std::chrono::weekday(day).c_encoding());
        return time;
    }

private:
    /// Day 0 of the ticks.
    static std::chrono::sys_days epoch()
    {
        using namespace std::chrono;
        return sys_days(year(1601) / January / 1);
    }

    /// Unchecked: ok() of the result tells whether there is such a day.
    static std::chrono::year_month_day dateOf(OsCalendarTime const& time)
    {
        using namespace std::chrono;
        return year(time.year) / month(time.month) / day(time.day);
    }

    /// 30827 is the last whole year that 63 bits of ticks hold. Month and day are tested before dateOf(), which would
    /// cut them to 8 bits.
    static bool isMoment(OsCalendarTime const& time)
    {
        return time.year >= 1601 && time.year <= 30827 && time.month <= 12 && time.day <= 31 && dateOf(time).ok() &&
               time.hour < 24 && time.minute < 60 && time.second < 60 && time.milliseconds < 1000;
    }
};

}  // namespace Vn
