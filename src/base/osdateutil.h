#pragma once

#include <base/osdatetypes.h>

namespace Vn
{

/// Absolute dates: from calendar fields and back, in UTC and in the zone of the process, and their arithmetic.
///
///     Vn::OsDateTypes::DateRep start;
///     Vn::OsDateUtil::makeTime(2000, 1, 1, 12, 0, 30.25, Vn::OsDateTypes::UTCTime, start);
///     const auto fields = Vn::OsDateUtil::convertToDateStruct(start, Vn::OsDateTypes::LocalTime);
///     const double age = Vn::OsDateUtil::diff(Vn::OsDateUtil::getCurrentTime(), start);    // seconds
///
/// Static only, without a state; any thread. Local time follows the rules of the zone at the date in question; on
/// Windows it has the offset of today.
/// Tests: tests/base/osdateutiltest.cpp.
class VN_BASE_EXPORT OsDateUtil
{
public:
    OsDateUtil() = delete;

    /// Now, to the millisecond. Throws ExSysErrorWindows if the system refuses to tell.
    static OsDateTypes::DateRep getCurrentTime();

    /// The moment of the given fields, to the millisecond: the fraction of `second` is rounded to it, so that 59.9996
    /// is refused like any other field out of range. False, with `result` as it was, for a date that isn't one: years
    /// are 1601 to 30827, and all fields but the second's fraction are cut to 16 bits before anybody looks. A local
    /// time that the clock skips or repeats is taken as the C library's `mktime` takes it.
    static bool makeTime(int year, int month, int day, int hour, int minute, double second,
                         OsDateTypes::TimeMode mode, OsDateTypes::DateRep& result);

    /// The fields of a moment, to the millisecond. Throws OsDateEx::ExInvalidDate beyond the range, from
    /// 0x8000000000000000 ticks or in September of 30828 on.
    static OsDateTypes::DateStruct convertToDateStruct(OsDateTypes::DateRep const& date,
                                                       OsDateTypes::TimeMode mode);

    /// -1 if `a` is the earlier one, 0, or 1.
    static int compare(OsDateTypes::DateRep const& a, OsDateTypes::DateRep const& b);

    // These go through a double: for a date of today that is exact to 16 ticks. A sum that 64 bits don't hold, or
    // that is not a number, becomes 0x8000000000000000, which is no date.
    static OsDateTypes::DateRep add(OsDateTypes::DateRep const& date, double seconds);
    static OsDateTypes::DateRep diff(OsDateTypes::DateRep const& date, double seconds);

    /// Seconds from `b` to `a`.
    static double diff(OsDateTypes::DateRep const& a, OsDateTypes::DateRep const& b);
};

}  // namespace Vn
