#pragma once

#include <base/baseexport.h>

#include <cstdint>

namespace Vn
{

/// The types of absolute dates; OsDateUtil calculates with them. A scope only: it has no instances.
///
///     Vn::OsDateTypes::DateRep none;                   // all bits set: no date
///     none.getTicks();                                 // 0xFFFFFFFFFFFFFFFF
///
/// Plain values: distinct objects from distinct threads. Tests: tests/base/osdateutiltest.cpp.
class VN_BASE_EXPORT OsDateTypes
{
public:
    class DateRep;
    class DateStruct;

    /// What calendar fields refer to.
    enum TimeMode
    {
        UTCTime = 0,
        LocalTime = 1  ///< the time zone of the process
    };

    OsDateTypes() = delete;
};

/// A moment: the number of ticks of 100 nanoseconds since the beginning of 1601, UTC, on every system.
///
///     0                     1 January 1601
///     116444736000000000    1 January 1970
///     0x7FFFFFFFFFFFFFFF    in September 30828, the last one with calendar fields
///
/// A value; any 64 bits are accepted, and OsDateUtil refuses what is no date.
class VN_BASE_EXPORT OsDateTypes::DateRep
{
public:
    /// No date: all bits set.
    DateRep() : DateRep(0xFFFFFFFF, 0xFFFFFFFF) {}

    /// The upper and the lower 32 bits of the ticks.
    DateRep(unsigned high, unsigned low) : _high(high), _low(low) {}

    /// The moment of that many ticks.
    static DateRep fromTicks(std::uint64_t ticks)
    {
        return {static_cast<unsigned>(ticks >> 32), static_cast<unsigned>(ticks)};
    }

    /// @{
    /// The ticks: as one number, or its upper and lower 32 bits.
    std::uint64_t getTicks() const { return std::uint64_t{_high} << 32 | _low; }
    unsigned getHigh() const { return _high; }
    unsigned getLow() const { return _low; }
    /// @}

private:
    unsigned _high;
    unsigned _low;
};

/// A date in the fields of the Gregorian calendar. A value; nothing is checked, and the day of the week need not fit.
///
///     Vn::OsDateTypes::DateStruct(2000, 1, 1, 12, 0, 30.25, 6);    // Saturday, 12:00:30.25
///
class VN_BASE_EXPORT OsDateTypes::DateStruct
{
public:
    /// Takes the fields as they are given.
    DateStruct(int year, int month, int day, int hour, int minute, double second, int dayOfWeek)
        : _year(year),
          _month(month),
          _day(day),
          _hour(hour),
          _minute(minute),
          _second(second),
          _dayOfWeek(dayOfWeek)
    {}

    /// @{
    /// A field as it was given. The ranges are those of OsDateUtil::convertToDateStruct().
    int getYear() const { return _year; }            ///< 1601 to 30828
    int getMonth() const { return _month; }          ///< 1 to 12
    int getDay() const { return _day; }              ///< 1 to 31
    int getHour() const { return _hour; }            ///< 0 to 23
    int getMinute() const { return _minute; }        ///< 0 to 59
    double getSecond() const { return _second; }     ///< 0 to 59.999, with its fraction
    int getDayOfWeek() const { return _dayOfWeek; }  ///< 0 for Sunday to 6
    /// @}

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
