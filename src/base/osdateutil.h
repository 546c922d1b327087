#pragma once

#include <base/osdatetypes.h>

namespace Vn
{

/// Absolute dates: from calendar fields and back, in UTC or local time, and their arithmetic.
///
///     Vn::OsDateTypes::DateRep start;
///     Vn::OsDateUtil::makeTime(2000, 1, 1, 12, 0, 30.25, Vn::OsDateTypes::UTCTime, start);
///     const auto fields = Vn::OsDateUtil::convertToDateStruct(start, Vn::OsDateTypes::LocalTime);
///     const double age = Vn::OsDateUtil::diff(Vn::OsDateUtil::getCurrentTime(), start);    // seconds
///
/// Static and stateless: any thread, but local time reads the environment (`TZ`), which no other thread may change
/// meanwhile. Local time follows the rules of the zone at the date in question; Windows uses today's offset.
/// Tests: tests/base/osdateutiltest.cpp.
class VN_BASE_EXPORT OsDateUtil
{
public:
    OsDateUtil() = delete;

    /// Now, cut to the millisecond. Throws ExSysErrorWindows if the system refuses to tell.
    static OsDateTypes::DateRep getCurrentTime();

    /// Stores in `result` the moment of the given fields; false, with `result` as it was, if they are no date.
    ///
    ///     2000, 2, 29, 0, 0, 30.25     ->  true
    ///     2000, 13, 1, 0, 0, 0.0       ->  false: no such month
    ///     1600 or 30828 as the year    ->  false: years are 1601 to 30827
    ///     59.9996 as the second        ->  false: it rounds to the millisecond 1000
    ///     67536 as the year            ->  true, as 2000: the fields are cut to 16 bits
    ///
    /// Seconds are kept to the millisecond, rounded. On Linux a local time that the clock skips or repeats is
    /// resolved as `mktime` does. Throws nothing.
    static bool makeTime(int year, int month, int day, int hour, int minute, double second,
                         OsDateTypes::TimeMode mode, OsDateTypes::DateRep& result);

    /// The fields of a moment, cut to the millisecond.
    ///
    ///     all bits set                    ->  throws OsDateEx::ExInvalidDate
    ///     from 0x8000000000000000 ticks   ->  the same
    ///
    /// If the system has no local time for the moment, the fields are those of UTC.
    static OsDateTypes::DateStruct convertToDateStruct(OsDateTypes::DateRep const& date,
                                                       OsDateTypes::TimeMode mode);

    /// -1 if `a` is earlier than `b`, 1 if it is later, 0 if they are equal. All bits set is the latest.
    static int compare(OsDateTypes::DateRep const& a, OsDateTypes::DateRep const& b);

    /// @{
    /// The moment so many seconds later (add) or earlier (diff).
    ///
    ///     today plus 1e-7 seconds      ->  exact to 16 ticks only: the sum goes through a double
    ///     a sum beyond 64 bits, NaN    ->  0x8000000000000000, which is no date
    ///
    static OsDateTypes::DateRep add(OsDateTypes::DateRep const& date, double seconds);
    static OsDateTypes::DateRep diff(OsDateTypes::DateRep const& date, double seconds);
    /// @}

    /// Seconds from `b` to `a`, negative if `a` is earlier. Subtracted in whole ticks, so exact for close moments.
    static double diff(OsDateTypes::DateRep const& a, OsDateTypes::DateRep const& b);
};

}  // namespace Vn
