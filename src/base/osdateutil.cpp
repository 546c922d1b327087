// Dates are 64-bit tick counts. The way from fields to ticks and back has two steps on every platform:
//
//     fields  <->  ticks of those fields        calendarToTicks(), ticksToCalendar(): the calendar, without a zone
//     local   <->  UTC                          localToTicks(), ticksToLocal(): the zone's offset at that moment
//
// Arithmetic with seconds goes through a double, as it always has: stored results depend on its rounding. Only the
// difference of two dates is taken in integers first.
#include <base/osdateutil.h>

#include <base/dtwrap.h>
#include <base/exsyserror.h>
#include <base/oscalendar_p.h>
#include <base/osdateex.h>
#include <base/osdateutil_p.h>

#include <cmath>
#include <limits>

namespace Vn
{
namespace
{
constexpr char const* sourceName = "src/base/osdateutil";

/// The low 16 bits: 67536 becomes 2000, -1 becomes 65535, which no field accepts.
std::uint16_t cut(int value)
{
    return static_cast<std::uint16_t>(value);
}

/// Whether an int holds the truncated value. False for NaN. Converting any other value would be undefined behaviour.
bool fitsInt(double value)
{
    return value > std::numeric_limits<int>::min() - 1.0 && value < std::numeric_limits<int>::max() + 1.0;
}

/// The sum, truncated. Intended: taken in a double, which is exact to 16 ticks for a date of today. Do not mend:
/// results that programs have stored come from this sum.
OsDateTypes::DateRep plus(OsDateTypes::DateRep const& date, double ticks)
{
    const double sum = static_cast<double>(static_cast<std::int64_t>(date.getTicks())) + ticks;
    return OsDateTypes::DateRep::fromTicks(static_cast<std::uint64_t>(DtWrap::truncated(sum)));
}
}  // namespace

OsDateTypes::DateRep OsDateUtil::getCurrentTime()
{
    OsCalendarTime now;
    std::uint64_t ticks;
    // By way of the fields, which have milliseconds: a finer date would not survive convertToDateStruct().
    if (!System::readCalendar(now) || !System::calendarToTicks(now, ticks))
        throw ExSysErrorWindows(sourceName, __LINE__);
    return OsDateTypes::DateRep::fromTicks(ticks);
}

bool OsDateUtil::makeTime(int year, int month, int day, int hour, int minute, double second,
                          OsDateTypes::TimeMode mode, OsDateTypes::DateRep& result)
{
    if (!fitsInt(second))
        return false;
    OsCalendarTime time;
    time.year = cut(year);
    time.month = cut(month);
    time.day = cut(day);
    time.hour = cut(hour);
    time.minute = cut(minute);
    time.second = cut(static_cast<int>(second));
    // Intended: 59.9996 rounds to the millisecond 1000 of second 59, which is refused. Do not mend: carrying it over
    // would accept dates that were always refused.
    time.milliseconds = cut(static_cast<int>((second - std::floor(second)) * 1000 + 0.5));
    time.dayOfWeek = 0;

    std::uint64_t ticks;
    if (!System::calendarToTicks(time, ticks))
        return false;
    // `result` is written only after the last test, so a refusal leaves it as it was.
    if (mode == OsDateTypes::LocalTime && !System::localToTicks(ticks, ticks))
        return false;
    result = OsDateTypes::DateRep::fromTicks(ticks);
    return true;
}

OsDateTypes::DateStruct OsDateUtil::convertToDateStruct(OsDateTypes::DateRep const& date,
                                                        OsDateTypes::TimeMode mode)
{
    std::uint64_t ticks = date.getTicks();
    OsCalendarTime time;
    // Tested before the zone's offset is added, which could bring a moment outside the range back into it.
    if (!System::ticksToCalendar(ticks, time))
        throw OsDateEx::ExInvalidDate(sourceName, __LINE__);
    if (mode == OsDateTypes::LocalTime) {
        System::ticksToLocal(ticks, ticks);  // Intended: on failure the moment stays in UTC. Do not mend.
        if (!System::ticksToCalendar(ticks, time))
            throw OsDateEx::ExInvalidDate(sourceName, __LINE__);
    }
    return {time.year,     time.month, time.day, time.hour, time.minute, time.milliseconds * 0.001 + time.second,
            time.dayOfWeek};
}

// As unsigned numbers, so what is no date, with its top bit set, is later than every date.
int OsDateUtil::compare(OsDateTypes::DateRep const& a, OsDateTypes::DateRep const& b)
{
    return (a.getTicks() > b.getTicks()) - (a.getTicks() < b.getTicks());
}

OsDateTypes::DateRep OsDateUtil::add(OsDateTypes::DateRep const& date, double seconds)
{
    return plus(date, seconds * 1e7);
}

// The product is negated, not the seconds: both ways round alike, and add() undoes it as far as a double can.
OsDateTypes::DateRep OsDateUtil::diff(OsDateTypes::DateRep const& date, double seconds)
{
    return plus(date, -(seconds * 1e7));
}

double OsDateUtil::diff(OsDateTypes::DateRep const& a, OsDateTypes::DateRep const& b)
{
    return static_cast<double>(static_cast<std::int64_t>(a.getTicks() - b.getTicks())) * 1e-7;
}

}  // namespace Vn
