// osdateutilwindows.cpp (POSIX form: osdateutilposix.cpp)
//
// The system's own types are the same two: FILETIME holds our ticks, SYSTEMTIME our fields, so each function
// converts, makes one call and converts back. The calls test the ranges. FileTimeToLocalFileTime() and its inverse
// use the offset of today, not that of the date in question; converting back and forth therefore gives the same
// ticks.
#include <base/osdateutil_p.h>

#include <base/oscalendar_p.h>

#include <windows.h>

namespace Vn::System
{
namespace
{
/// FILETIME has only the alignment of 32-bit numbers, so no cast to and from 64 bits: the halves are put together.
::FILETIME toFileTime(std::uint64_t ticks)
{
    return {static_cast<::DWORD>(ticks), static_cast<::DWORD>(ticks >> 32)};
}

std::uint64_t toTicks(::FILETIME const& time)
{
    return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
}

/// The same fields in the order of our type, which the tests use on every system.
OsCalendarTime toCalendar(::SYSTEMTIME const& time)
{
    return {time.wYear,   time.wMonth,  time.wDay,          time.wHour,
            time.wMinute, time.wSecond, time.wMilliseconds, time.wDayOfWeek};
}
}  // namespace

// Always an answer; the optional is for the other form.
std::optional<OsCalendarTime> readCalendar()
{
    ::SYSTEMTIME time;
    ::GetSystemTime(&time);  // UTC, to the millisecond; cannot fail
    return toCalendar(time);
}

std::optional<std::uint64_t> calendarToTicks(OsCalendarTime const& time)
{
    ::SYSTEMTIME fields = {};  // the call ignores the day of the week
    fields.wYear = time.year;
    fields.wMonth = time.month;
    fields.wDay = time.day;
    fields.wHour = time.hour;
    fields.wMinute = time.minute;
    fields.wSecond = time.second;
    fields.wMilliseconds = time.milliseconds;
    ::FILETIME result;
    if (!::SystemTimeToFileTime(&fields, &result))
        return std::nullopt;
    return toTicks(result);
}

// The call refuses ticks with the top bit set, as OsCalendar does.
std::optional<OsCalendarTime> ticksToCalendar(std::uint64_t ticks)
{
    const ::FILETIME given = toFileTime(ticks);
    ::SYSTEMTIME fields;
    if (!::FileTimeToSystemTime(&given, &fields))
        return std::nullopt;
    return toCalendar(fields);
}

std::optional<std::uint64_t> ticksToLocal(std::uint64_t ticks)
{
    const ::FILETIME given = toFileTime(ticks);
    ::FILETIME result;
    if (!::FileTimeToLocalFileTime(&given, &result))
        return std::nullopt;
    return toTicks(result);
}

// A local time that the clock skips or repeats is no special case here: one offset holds for all dates.
std::optional<std::uint64_t> localToTicks(std::uint64_t local)
{
    const ::FILETIME given = toFileTime(local);
    ::FILETIME result;
    if (!::LocalFileTimeToFileTime(&given, &result))
        return std::nullopt;
    return toTicks(result);
}

}  // namespace Vn::System
