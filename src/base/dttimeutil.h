#pragma once

#include <base/arrayptr.h>
#include <base/dttime.h>
#include <base/interval.h>

namespace Vn
{

/// Converts stream time to and from text and floating-point seconds.
///
///     const Vn::ArrayPtr<char> text = Vn::DtTimeUtil::getDtStringFromDtTime(position);    // "100 30000 1001"
///     position == Vn::DtTimeUtil::getDtTimeFromDtString(text);                            // always
///
/// The text is the same under every locale, and a time that is written and read again is equal. Seconds are not
/// always exact: a double holds counts up to 2^53, a float up to 2^24.
///
/// Static functions without state; any thread may call them, before any package starts as well. The caller owns the
/// returned arrays.
/// Tests: tests/base/dttimeutiltest.cpp.
class VN_BASE_EXPORT DtTimeUtil
{
public:
    DtTimeUtil() = delete;

    /// Count, rate numerator and rate denominator in decimal, with one blank between them; at most 44 characters.
    ///
    ///     100 at 30000/1001  ->  "100 30000 1001"
    ///     -5 at 1/1          ->  "-5 1 1"
    ///
    static ArrayPtrRet<char> getDtStringFromDtTime(DtTime const& time);

    /// The time that a text of three decimal fields stands for. Any run of blanks separates two fields.
    ///
    ///     "100 25 1"            ->  100 at 25/1
    ///     "  100   25x 1 more"  ->  100 at 25/1: "x" ends the second field, a fourth one is ignored
    ///     "100 -25 -1"          ->  100 at 25/1: the rate is reduced
    ///     "x 25 1"              ->  0 at 25/1: a count without a number is 0
    ///     "100 x 1"             ->  throws DtEx::DtStringError (ErrRateNumeratorMalformed)
    ///     "100 25 99999999999"  ->  throws DtEx::DtStringError (ErrRateDenominatorOverflow)
    ///     "100 25", "", null    ->  throws DtEx::DtStringError: a missing field is malformed
    ///     "100 0 1"             ->  throws DtEx::BadRate
    ///     "100 1 0"             ->  throws RationalEx::ExDenominatorZero
    ///
    /// Rate fields must fit 32 bits. A count beyond 64 bits becomes the nearest limit.
    static DtTime getDtTimeFromDtString(char const* text);

    /// @{
    /// The whole units of `rate` in `seconds`, truncated toward zero. Computed in the argument's type, with the
    /// rate's quotient first.
    ///
    ///     25/1, 0.99   ->  24 at 25/1
    ///     25/1, -0.99  ->  -24 at 25/1
    ///     25/1, 1e30   ->  -9223372036854775808 at 25/1, as for all that 64 bits cannot hold, not-a-number included
    ///     0/1, 1.0     ->  throws DtEx::BadRate
    ///
    static DtTime getDtTimeFromSeconds(Rational const& rate, float seconds);
    static DtTime getDtTimeFromSeconds(Rational const& rate, double seconds);
    /// @}

    /// @{
    /// The time in seconds: 50 at 25/1 is 2.0. Computed in the result's type, which rounds the count as well.
    ///
    /// A float keeps seven digits of the count, so the frame numbers of a long recording do not survive a conversion
    /// to seconds and back.
    static float getSecondsFloat(DtTime const& time);
    static double getSecondsDouble(DtTime const& time);
    /// @}

    /// @{
    /// The interval of seconds in counts of `time`'s rate: the lower bound truncated toward zero, the upper one
    /// rounded up. `time`'s count is not read.
    ///
    ///     25/1, [0.5, 1.01]  ->  [12, 26]
    ///     25/1, [-0.5, 1.0]  ->  [-12, 25]
    ///
    /// Truncation moves a negative lower bound up, so its end is not covered: -12 counts are -0.48 s. A bound that 64
    /// bits cannot hold, or not-a-number, becomes the most negative count.
    static Interval<DtTimeIndex> getInclusiveDtTimeIndexInterval(DtTime const& time,
                                                                 Interval<float> const& seconds);
    static Interval<DtTimeIndex> getInclusiveDtTimeIndexInterval(DtTime const& time,
                                                                 Interval<double> const& seconds);
    /// @}

    /// @{
    /// The interval of counts in seconds at `time`'s rate; `time`'s count is not read.
    ///
    ///     25/1, [25, 50]  ->  [1.0, 2.0]
    ///     25/1, [50, 25]  ->  [2.0, 1.0]: the bounds are not put in order
    ///
    static Interval<float> getSecondsIntervalFloat(DtTime const& time, Interval<DtTimeIndex> const& counts);
    static Interval<double> getSecondsIntervalDouble(DtTime const& time, Interval<DtTimeIndex> const& counts);
    /// @}
};

}  // namespace Vn
