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
#include <optional>

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
    // By way of the fields, which have milliseconds: a finer date would not survive convertToDateStruct().
    const std::optional<OsCalendarTime> now = System::readCalendar();
    const std::optional<std::uint64_t> ticks = now ? System::calendarToTicks(*now) : std::nullopt;
    if (!ticks)
        throw ExSysErrorWindows(sourceName, __LINE__);
    return OsDateTypes::DateRep::fromTicks(*ticks);
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
    time.milliseconds =
        cut(static_cast<int>((second - std::floor(second)) * 1000 + 0.5));  // NOLINT(bugprone-incorrect-roundings)
    time.dayOfWeek = 0;

    std::optional<std::uint64_t> ticks = System::calendarToTicks(time);
    if (ticks && mode == OsDateTypes::LocalTime)
        ticks = System::localToTicks(*ticks);
    // A refusal leaves `result` as it was.
    if (ticks)
        result = OsDateTypes::DateRep::fromTicks(*ticks);
    return ticks.has_value();
}

OsDateTypes::DateStruct OsDateUtil::convertToDateStruct(OsDateTypes::DateRep const& date,
                                                        OsDateTypes::TimeMode mode)
{
    const std::uint64_t ticks = date.getTicks();
    // Tested before the zone's offset is added, which could bring a moment outside the range back into it.
    std::optional<OsCalendarTime> time = System::ticksToCalendar(ticks);
    if (time && mode == OsDateTypes::LocalTime)
        // Intended: where the zone has no answer, the moment stays in UTC. Do not mend.
        time = System::ticksToCalendar(System::ticksToLocal(ticks).value_or(ticks));
    if (!time)
        throw OsDateEx::ExInvalidDate(sourceName, __LINE__);
    return {time->year,     time->month,  time->day,
            time->hour,     time->minute, time->milliseconds * 0.001 + time->second,
            time->dayOfWeek};
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
