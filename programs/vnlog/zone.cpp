#include "zone.h"

#include <charconv>
#include <stdexcept>

namespace vnlog
{
namespace
{
constexpr long long secondsPerDay = 86400;
constexpr std::time_t quarterOfAnHour = 900;  // zones change at multiples of it

/// "+05:30", "-0800", "+1": hours, and minutes behind them.
std::optional<long> readOffset(std::string_view text)
{
    const bool isWest = text.starts_with('-');
    text.remove_prefix(1);
    std::string plain;
    for (const char c : text)
        if (c != ':')
            plain += c;
    int number = 0;
    const auto [end, error] = std::from_chars(plain.data(), plain.data() + plain.size(), number);
    if (error != std::errc() || end != plain.data() + plain.size() || number < 0 || plain.size() > 4)
        return std::nullopt;
    const int hours = plain.size() > 2 ? number / 100 : number;
    const int minutes = plain.size() > 2 ? number % 100 : 0;
    if (hours > 24 || minutes > 59)
        return std::nullopt;
    const long seconds = 3600L * hours + 60L * minutes;
    return isWest ? -seconds : seconds;
}

/// H. Hinnant's days_from_civil and civil_from_days count years from March, so that the leap day is a year's last.
Civil fromDays(long long days)
{
    days += 719468;
    const long long era = (days >= 0 ? days : days - 146096) / 146097;
    const long long dayOfEra = days - era * 146097;
    const long long yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const long long dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const long long month = (5 * dayOfYear + 2) / 153;
    Civil date = {};
    date.day = static_cast<int>(dayOfYear - (153 * month + 2) / 5 + 1);
    date.month = static_cast<int>(month < 10 ? month + 3 : month - 9);
    date.year = static_cast<int>(yearOfEra + era * 400 + (date.month <= 2 ? 1 : 0));
    return date;
}
}  // namespace

long long getDays(int year, int month, int day)
{
    const long long y = month <= 2 ? year - 1 : year;
    const long long era = (y >= 0 ? y : y - 399) / 400;
    const long long yearOfEra = y - era * 400;
    const long long dayOfYear = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
    return era * 146097 + yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear - 719468;
}

Zone Zone::parse(std::string_view text)
{
    Zone zone;
    if (text == "local")
        return getLocal();
    if (text == "UTC" || text == "utc" || text == "Z")
        return zone;
    if (text.starts_with('+') || text.starts_with('-')) {
        const std::optional<long> offset = readOffset(text);
        if (!offset)
            throw std::runtime_error("'" + std::string(text) + "' is no offset from UTC, as +05:30 is");
        zone._offset = *offset;
        return zone;
    }
    zone._form = Form::System;
    zone._name = text;
    if (text.empty() || !hasSystemZone(zone._name))
        throw std::runtime_error("'" + zone._name + "' " + noSystemZone);
    return zone;
}

Zone Zone::getLocal()
{
    Zone zone;
    zone._form = Form::System;
    return zone;
}

long Zone::getOffset(std::time_t time) const
{
    if (_form == Form::Fixed)
        return _offset;
    const std::time_t quarter = time - ((time % quarterOfAnHour) + quarterOfAnHour) % quarterOfAnHour;
    if (_quarter != quarter) {
        _quarterOffset = getSystemOffset(_name, quarter);
        _quarter = quarter;
    }
    return _quarterOffset;
}

std::optional<std::time_t> Zone::find(Civil const& date) const
{
    const Civil real = fromDays(getDays(date.year, date.month, date.day));
    if (real.year != date.year || real.month != date.month || real.day != date.day)
        return std::nullopt;
    if (_form == Form::System)
        return findSystemTime(_name, date);
    const long long seconds = getDays(date.year, date.month, date.day) * secondsPerDay + 3600LL * date.hour +
                              60LL * date.minute + date.second - _offset;
    return static_cast<std::time_t>(seconds);
}

Civil Zone::getDate(std::time_t time) const
{
    const long long seconds = static_cast<long long>(time) + getOffset(time);
    const long long day = (seconds >= 0 ? seconds : seconds - (secondsPerDay - 1)) / secondsPerDay;
    const int rest = static_cast<int>(seconds - day * secondsPerDay);
    Civil date = fromDays(day);
    date.hour = rest / 3600;
    date.minute = rest / 60 % 60;
    date.second = rest % 60;
    return date;
}

}  // namespace vnlog
