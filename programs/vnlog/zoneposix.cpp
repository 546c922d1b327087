// zoneposix.cpp (Windows form: zonewindows.cpp)
//
// The C library converts in the zone of the process, which the variable TZ names. A zone with a name sets it, and the machine's
// own puts back what was there; nothing is set while the zone stays the same.
#include "zone.h"

#include <cstdlib>
#include <sys/stat.h>

namespace vnlog
{
char const* const noSystemZone = "is no time zone that this system knows; the package tzdata has them";

namespace
{
std::string getFolder()
{
    char const* const folder = ::getenv("TZDIR");
    return folder != nullptr && *folder != '\0' ? folder : "/usr/share/zoneinfo";
}

/// What TZ was before the first call of setZone().
std::optional<std::string> const& getOwnZone()
{
    static const std::optional<std::string> own = []() -> std::optional<std::string> {
        char const* const value = ::getenv("TZ");
        return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
    }();
    return own;
}

void setZone(std::string const& zone)
{
    static std::optional<std::string> current;
    std::optional<std::string> const& own = getOwnZone();
    if (current == zone)
        return;
    if (!zone.empty())
        ::setenv("TZ", (":" + zone).c_str(), 1);
    else if (own)
        ::setenv("TZ", own->c_str(), 1);
    else
        ::unsetenv("TZ");
    ::tzset();
    current = zone;
}
}  // namespace

bool hasSystemZone(std::string const& zone)
{
    struct ::stat status = {};
    return zone.find("..") == std::string::npos && zone.front() != '/' &&
           ::stat((getFolder() + "/" + zone).c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

long getSystemOffset(std::string const& zone, std::time_t time)
{
    setZone(zone);
    struct ::tm parts = {};
    return ::localtime_r(&time, &parts) != nullptr ? parts.tm_gmtoff : 0;
}

std::optional<std::time_t> findSystemTime(std::string const& zone, Civil const& date)
{
    setZone(zone);
    struct ::tm parts = {};
    parts.tm_year = date.year - 1900;
    parts.tm_mon = date.month - 1;
    parts.tm_mday = date.day;
    parts.tm_hour = date.hour;
    parts.tm_min = date.minute;
    parts.tm_sec = date.second;
    parts.tm_isdst = -1;
    parts.tm_wday = -1;  // stays so if the time can't be represented
    const std::time_t time = ::mktime(&parts);
    return parts.tm_wday >= 0 ? std::optional(time) : std::nullopt;
}

}  // namespace vnlog
