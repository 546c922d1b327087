// Text: takeField() splits the text into three fields without copying it, scanNumber() reads a number from the
// beginning of a field, and scanRateTerm() adds the limits of 32 bits and the exceptions. None of them uses the C
// library, whose functions depend on the current locale and, for `long`, have another range on Windows. Writing goes
// through std::to_chars() for the same reason.
//
// Seconds: each conversion is a template over float and double that computes in that type alone. The quotient of the
// rate's terms is formed first, then multiplied; another order would change the last bit of the results. Whole counts
// are made by DtWrap::truncated(), which gives the same count on every processor for numbers that do not fit.
#include <base/dttimeutil.h>

#include <base/dtex.h>
#include <base/duplicatestring.h>
#include <base/floatutil.h>

#include <algorithm>
#include <charconv>
#include <limits>
#include <string_view>
#include <system_error>

namespace Vn
{
namespace
{
constexpr char const* sourceName = "src/base/dttimeutil";
using ErrorCode = DtEx::DtStringError::ErrorCode;

/// Removes the next field from the front of `text` and returns it; empty if there is none. Only blanks separate
/// fields.
///
///     "  100 25 1"  ->  "100", and " 25 1" is left
///     "   "         ->  "", and "" is left
///
std::string_view takeField(std::string_view& text)
{
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    const std::string_view field = text.substr(0, text.find(' '));
    text.remove_prefix(field.size());
    return field;
}

struct ScannedNumber
{
    std::int64_t value;  ///< the nearest limit if the number passes 64 bits, 0 if there is none
    bool isFound;
};

/// Leading white space, a sign, then digits up to the first other character.
///
///     "\t-25x"  ->  -25
///     "+25"     ->  25
///     "+-25"    ->  not found
///     ""        ->  not found
///
ScannedNumber scanNumber(std::string_view field)
{
    field.remove_prefix(std::min(field.find_first_not_of(" \t\n\v\f\r"), field.size()));
    if (field.substr(0, 1) == "+") {  // which std::from_chars() does not take
        field.remove_prefix(1);
        if (field.substr(0, 1) == "-")
            return {0, false};
    }
    std::int64_t value = 0;
    const std::from_chars_result result = std::from_chars(field.data(), field.data() + field.size(), value);
    if (result.ec == std::errc::invalid_argument)
        return {0, false};
    if (result.ec == std::errc::result_out_of_range) {
        value = field.front() == '-' ? std::numeric_limits<std::int64_t>::min()
                                     : std::numeric_limits<std::int64_t>::max();
    }
    return {value, true};
}

/// A term of the rate in 32 bits, whatever the width of `long`. Throws with `overflow` for a number that does not
/// fit, and with `malformed` for a field without a number, a missing one included.
int scanRateTerm(std::string_view field, ErrorCode malformed, ErrorCode overflow)
{
    const ScannedNumber number = scanNumber(field);
    if (number.value < std::numeric_limits<int>::min() || number.value > std::numeric_limits<int>::max())
        throw DtEx::DtStringError(sourceName, __LINE__, overflow);
    if (!number.isFound)
        throw DtEx::DtStringError(sourceName, __LINE__, malformed);
    return static_cast<int>(number.value);
}

/// Counts per second.
template <class Float>
Float rateOf(Rational const& rate)
{
    return static_cast<Float>(rate.getNumerator()) / static_cast<Float>(rate.getDenominator());
}

/// Seconds per count.
template <class Float>
Float periodOf(Rational const& rate)
{
    return static_cast<Float>(rate.getDenominator()) / static_cast<Float>(rate.getNumerator());
}

template <class Float>
DtTime timeFromSeconds(Rational const& rate, Float seconds)
{
    return DtTime(DtWrap::truncated(rateOf<Float>(rate) * seconds), rate);
}

template <class Float>
Float secondsFromTime(DtTime const& time)
{
    return periodOf<Float>(time.getRate()) * static_cast<Float>(std::int64_t(time.getCount()));
}

template <class Float>
Interval<DtTimeIndex> countsFromSeconds(DtTime const& time, Interval<Float> const& seconds)
{
    // Intended: the upper bound is rounded up, but the lower one is truncated and not rounded down, so a negative
    // lower end is not covered; do not mend.
    const Float factor = rateOf<Float>(time.getRate());
    const std::int64_t upper = DtWrap::truncated(FloatUtil::ceil(factor * seconds.getUpper()));
    const std::int64_t lower = DtWrap::truncated(factor * seconds.getLower());
    return Interval<DtTimeIndex>(lower, upper);
}

template <class Float>
Interval<Float> secondsFromCounts(DtTime const& time, Interval<DtTimeIndex> const& counts)
{
    // A negative rate leaves the upper bound below the lower one; nothing puts them in order.
    const Float factor = periodOf<Float>(time.getRate());
    return Interval<Float>(static_cast<Float>(std::int64_t(counts.getLower())) * factor,
                           static_cast<Float>(std::int64_t(counts.getUpper())) * factor);
}
}  // namespace

ArrayPtrRet<char> DtTimeUtil::getDtStringFromDtTime(DtTime const& time)
{
    char text[48];  // the longest form has 44 characters: 20, 11 and 11, and two blanks
    char* const last = text + sizeof text - 1;
    char* end = std::to_chars(text, last, std::int64_t(time.getCount())).ptr;
    *end++ = ' ';
    end = std::to_chars(end, last, time.getRate().getNumerator()).ptr;
    *end++ = ' ';
    end = std::to_chars(end, last, time.getRate().getDenominator()).ptr;
    *end = '\0';
    return duplicateString(text);
}

DtTime DtTimeUtil::getDtTimeFromDtString(char const* text)
{
    std::string_view rest = text != nullptr ? text : "";
    const std::int64_t count = scanNumber(takeField(rest)).value;  // 0 without a number, which is no error
    // The order of the throws is part of the interface: the numerator is checked before the denominator is looked at.
    const int numerator =
        scanRateTerm(takeField(rest), ErrorCode::ErrRateNumeratorMalformed, ErrorCode::ErrRateNumeratorOverflow);
    const int denominator = scanRateTerm(takeField(rest), ErrorCode::ErrRateDenominatorMalformed,
                                         ErrorCode::ErrRateDenominatorOverflow);
    return DtTime(count, numerator, denominator);
}

DtTime DtTimeUtil::getDtTimeFromSeconds(Rational const& rate, float seconds)
{
    return timeFromSeconds(rate, seconds);
}

DtTime DtTimeUtil::getDtTimeFromSeconds(Rational const& rate, double seconds)
{
    return timeFromSeconds(rate, seconds);
}

float DtTimeUtil::getSecondsFloat(DtTime const& time)
{
    return secondsFromTime<float>(time);
}

double DtTimeUtil::getSecondsDouble(DtTime const& time)
{
    return secondsFromTime<double>(time);
}

Interval<DtTimeIndex> DtTimeUtil::getInclusiveDtTimeIndexInterval(DtTime const& time,
                                                                  Interval<float> const& seconds)
{
    return countsFromSeconds(time, seconds);
}

Interval<DtTimeIndex> DtTimeUtil::getInclusiveDtTimeIndexInterval(DtTime const& time,
                                                                  Interval<double> const& seconds)
{
    return countsFromSeconds(time, seconds);
}

Interval<float> DtTimeUtil::getSecondsIntervalFloat(DtTime const& time, Interval<DtTimeIndex> const& counts)
{
    return secondsFromCounts<float>(time, counts);
}

Interval<double> DtTimeUtil::getSecondsIntervalDouble(DtTime const& time, Interval<DtTimeIndex> const& counts)
{
    return secondsFromCounts<double>(time, counts);
}

}  // namespace Vn
