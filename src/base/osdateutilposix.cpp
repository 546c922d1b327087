// osdateutilposix.cpp (Windows form: osdateutilwindows.cpp)
//
// The calendar is our own (OsCalendar): gmtime() and timegm() would do, but accept fields that are no date. Only the
// zone comes from the C library, in whole seconds since 1970; the rest below a second is carried past it unchanged.
// The zone is that of the environment's `TZ` at the time of the call, and setting that variable meanwhile is a race.
#include <base/osdateutil_p.h>

#include <base/oscalendar_p.h>

#include <time.h>

namespace Vn::System
{
namespace
{
/// A moment in ticks as whole seconds since 1970, negative before, and the ticks that are left, from 0 to 9,999,999.
struct UnixTime
{
    explicit UnixTime(std::uint64_t ticks)
        : seconds(static_cast<std::int64_t>(ticks / OsCalendar::ticksPerSecond) - OsCalendar::secondsTo1970),
          rest(ticks % OsCalendar::ticksPerSecond)
    {}

    ::time_t seconds;
    std::uint64_t rest;  ///< ticks
};

/// A moment before 1601 wraps to a number with its top bit set, which is no date.
std::uint64_t toTicks(::time_t seconds, std::uint64_t rest)
{
    return static_cast<std::uint64_t>(seconds + OsCalendar::secondsTo1970) * OsCalendar::ticksPerSecond + rest;
}
}  // namespace

std::optional<OsCalendarTime> readCalendar()
{
    ::timespec time;
    if (::clock_gettime(CLOCK_REALTIME, &time) != 0)
        return std::nullopt;
    // The nanoseconds below a tick are cut, and fromTicks() cuts to the millisecond.
    return OsCalendar::fromTicks(toTicks(time.tv_sec, static_cast<std::uint64_t>(time.tv_nsec) / 100));
}

std::optional<std::uint64_t> calendarToTicks(OsCalendarTime const& time)
{
    return OsCalendar::toTicks(time);
}

std::optional<OsCalendarTime> ticksToCalendar(std::uint64_t ticks)
{
    return OsCalendar::fromTicks(ticks);
}

std::optional<std::uint64_t> ticksToLocal(std::uint64_t ticks)
{
    const UnixTime time(ticks);
    ::tzset();  // localtime_r() need not notice that TZ has changed; mktime() must
    ::tm fields;
    if (::localtime_r(&time.seconds, &fields) == nullptr)
        return std::nullopt;
    return toTicks(time.seconds + fields.tm_gmtoff, time.rest);
}

// mktime() takes fields and not seconds, so the local seconds become fields first, as if they were UTC.
std::optional<std::uint64_t> localToTicks(std::uint64_t local)
{
    const UnixTime time(local);
    ::tm fields;
    if (::gmtime_r(&time.seconds, &fields) == nullptr)
        return std::nullopt;
    fields.tm_isdst = -1;  // daylight saving time or not: the library finds out
    fields.tm_wday = -1;   // set on success only: the result -1 can also be the last second of 1969
    const ::time_t utc = ::mktime(&fields);
    if (utc == -1 && fields.tm_wday == -1)
        return std::nullopt;
    const std::uint64_t found = toTicks(utc, time.rest);
    if (found >> 63 != 0)
        return std::nullopt;  // before 1601
    return found;
}

}  // namespace Vn::System
