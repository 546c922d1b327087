#pragma once

#include <base/baseexport.h>

#include <cstdint>

namespace Vn
{

/// The types of absolute dates; OsDateUtil has what is done with them.
/// Tests: tests/base/osdateutiltest.cpp.
class VN_BASE_EXPORT OsDateTypes
{
public:
    class DateRep;
    class DateStruct;

    /// What calendar fields mean: the zone of the process, or none.
    enum TimeMode
    {
        UTCTime = 0,
        LocalTime = 1
    };

    OsDateTypes() = delete;
};

/// A moment, in ticks of 100 nanoseconds since the beginning of 1601, UTC, on every system. A value.
class VN_BASE_EXPORT OsDateTypes::DateRep
{
public:
    /// No date: all bits set.
    DateRep() : DateRep(0xFFFFFFFF, 0xFFFFFFFF) {}

    DateRep(unsigned high, unsigned low) : _high(high), _low(low) {}

    static DateRep fromTicks(std::uint64_t ticks)
    {
        return {static_cast<unsigned>(ticks >> 32), static_cast<unsigned>(ticks)};
    }

    std::uint64_t getTicks() const { return std::uint64_t{_high} << 32 | _low; }
    unsigned getHigh() const { return _high; }
    unsigned getLow() const { return _low; }

private:
    unsigned _high;
    unsigned _low;
};

/// A date in the fields of the Gregorian calendar. A value; nothing is checked.
class VN_BASE_EXPORT OsDateTypes::DateStruct
{
public:
    DateStruct(int year, int month, int day, int hour, int minute, double second, int dayOfWeek)
        : _year(year),
          _month(month),
          _day(day),
          _hour(hour),
          _minute(minute),
          _second(second),
          _dayOfWeek(dayOfWeek)
    {}

    int getYear() const { return _year; }
    int getMonth() const { return _month; }  ///< 1 to 12
    int getDay() const { return _day; }      ///< 1 to 31
    int getHour() const { return _hour; }
    int getMinute() const { return _minute; }
    double getSecond() const { return _second; }     ///< with its fraction
    int getDayOfWeek() const { return _dayOfWeek; }  ///< 0 for Sunday

private:
    int _year;
    int _month;
    int _day;
    int _hour;
    int _minute;
    double _second;
    int _dayOfWeek;
};

}  // namespace Vn
