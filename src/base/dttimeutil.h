#pragma once

#include <base/arrayptr.h>
#include <base/dttime.h>
#include <base/interval.h>

namespace Vn
{

/// The edge of stream time: its text form, and the passage to and from seconds.
///
///     const Vn::ArrayPtr<char> text = Vn::DtTimeUtil::getDtStringFromDtTime(position);    // "100 30000 1001"
///     position == Vn::DtTimeUtil::getDtTimeFromDtString(text);                            // always
///
/// Texts are the same under every locale. Counts that 64 bits don't hold, and those from not-a-number, come out as
/// the most negative one. Static only; any thread, no start-up.
/// Tests: tests/base/dttimeutiltest.cpp.
class VN_BASE_EXPORT DtTimeUtil
{
public:
    DtTimeUtil() = delete;

    /// Count, rate numerator and rate denominator in decimal, a blank between them; at most 44 characters.
    static ArrayPtrRet<char> getDtStringFromDtTime(DtTime const& time);

    /// Reads that form; fields are parted by any run of blanks, and what follows the third is passed over. Each field
    /// is read up to the first character that doesn't fit. A count without a number is 0, and one beyond 64 bits the
    /// nearest limit. Throws DtEx::DtStringError for a rate field that is missing, holds no number, or passes 32
    /// bits; DtEx::BadRate for a zero numerator; RationalEx::ExDenominatorZero. A null text counts as empty.
    static DtTime getDtTimeFromDtString(char const* text);

    /// The count of whole units in `seconds`, truncated toward zero; reckoned in the argument's type. Throws
    /// DtEx::BadRate for a null rate.
    static DtTime getDtTimeFromSeconds(Rational const& rate, float seconds);
    static DtTime getDtTimeFromSeconds(Rational const& rate, double seconds);

    /// Reckoned in the result's type, the count too: a float keeps seven digits of it.
    static float getSecondsFloat(DtTime const& time);
    static double getSecondsDouble(DtTime const& time);

    /// The counts of `time`'s rate from `seconds`' lower bound, truncated toward zero, to its upper bound, rounded
    /// up. A negative lower end is therefore not covered. Only the rate of `time` is read.
    static Interval<DtTimeIndex> getInclusiveDtTimeIndexInterval(DtTime const& time,
                                                                 Interval<float> const& seconds);
    static Interval<DtTimeIndex> getInclusiveDtTimeIndexInterval(DtTime const& time,
                                                                 Interval<double> const& seconds);

    /// The seconds of both counts at `time`'s rate, in the order in which they come. Only the rate of `time` is read.
    static Interval<float> getSecondsIntervalFloat(DtTime const& time, Interval<DtTimeIndex> const& counts);
    static Interval<double> getSecondsIntervalDouble(DtTime const& time, Interval<DtTimeIndex> const& counts);
};

}  // namespace Vn
