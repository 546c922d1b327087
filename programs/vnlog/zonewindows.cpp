// zonewindows.cpp (POSIX form: zoneposix.cpp)
//
// Windows has no table of zones by their usual names: the machine's own zone is all that the C library converts in.
#include "zone.h"

#include <ctime>

namespace vnlog
{
char const* const noSystemZone = "is no time zone here: Windows takes local, UTC and offsets as +05:30";

bool hasSystemZone(std::string const& zone)
{
    return zone.empty();
}

long getSystemOffset(std::string const&, std::time_t time)
{
    std::tm parts = {};
    if (::localtime_s(&parts, &time) != 0)
        return 0;
    const long long shown = getDays(parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday) * 86400 +
                            3600LL * parts.tm_hour + 60LL * parts.tm_min + parts.tm_sec;
    return static_cast<long>(shown - static_cast<long long>(time));
}

std::optional<std::time_t> findSystemTime(std::string const&, Civil const& date)
{
    std::tm parts = {};
    parts.tm_year = date.year - 1900;
    parts.tm_mon = date.month - 1;
    parts.tm_mday = date.day;
    parts.tm_hour = date.hour;
    parts.tm_min = date.minute;
    parts.tm_sec = date.second;
    parts.tm_isdst = -1;
    const std::time_t time = ::mktime(&parts);
    return time != static_cast<std::time_t>(-1) ? std::optional(time) : std::nullopt;
}

}  // namespace vnlog
