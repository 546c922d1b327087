#pragma once

#include "logline.h"

#include <ctime>
#include <optional>
#include <string>
#include <string_view>

namespace vnlog
{

/// A time zone: the one of this machine, UTC, a fixed offset, or one with a name.
///
///     Zone::parse("local")          ->  that of this machine
///     Zone::parse("UTC")            ->  UTC; "Z" as well
///     Zone::parse("+05:30")         ->  five and a half hours east of Greenwich; "-0800" and "+1" as well
///     Zone::parse("Europe/Berlin")  ->  by the system's table of zones; throws std::runtime_error where there is none of that
///                                       name, and on Windows, which has no such table
///
/// One thread: a zone with a name sets the zone of the process while it converts.
class Zone
{
public:
    /// UTC.
    Zone() = default;

    static Zone parse(std::string_view text);
    static Zone getLocal();

    /// Seconds that clocks on the wall are ahead of UTC at that time. Times of one quarter of an hour share an answer, which is
    /// kept.
    long getOffset(std::time_t time) const;

    /// The second at which a clock on the wall shows that date; as the C library takes it where clocks skip or repeat an hour.
    /// Nothing for a date that does not exist.
    std::optional<std::time_t> find(Civil const& date) const;

    /// The date that clocks on the wall show.
    Civil getDate(std::time_t time) const;

private:
    enum class Form : unsigned char
    {
        Fixed,
        System
    };

    Form _form = Form::Fixed;
    long _offset = 0;   ///< of a fixed zone, in seconds
    std::string _name;  ///< of a system's zone; "" is the machine's own
    mutable std::optional<std::time_t> _quarter;
    mutable long _quarterOffset = 0;
};

/// The days from 1970-01-01 to a date of the Gregorian calendar; negative before it.
long long getDays(int year, int month, int day);

/// @{
/// In zoneposix.cpp and zonewindows.cpp. A `zone` of "" is the machine's own.
bool hasSystemZone(std::string const& zone);                      ///< whether it can be asked
long getSystemOffset(std::string const& zone, std::time_t time);  ///< in seconds, east positive
std::optional<std::time_t> findSystemTime(std::string const& zone, Civil const& date);  ///< as mktime() takes it
extern char const* const noSystemZone;  ///< why a name is refused, behind the name
/// @}

}  // namespace vnlog
