// Text: FieldReader goes through the text once, without copying it, and reads a number from the beginning of each field;
// rateTermOf() adds the limits of 32 bits and the exceptions. None of them uses the C library, whose functions depend on
// the current locale and, for `long`, have another range on Windows. Writing goes through std::to_chars() for the same
// reason.
//
// Seconds: each conversion is a template over float and double that computes in that type alone. The quotient of the
// rate's terms is formed first, then multiplied; another order would change the last bit of the results. Whole counts
// are made by DtWrap::truncated(), which gives the same count on every processor for numbers that do not fit.
#include <base/dttimeutil.h>

#include <base/dtex.h>
#include <base/floatutil.h>

#include <charconv>
#include <cstring>
#include <limits>

namespace Vn
{
namespace
{
constexpr char const* sourceName = "src/base/dttimeutil";
using ErrorCode = DtEx::DtStringError::ErrorCode;

/// What a field begins with. Both members are needed: a count without a number is 0, a term of the rate without one an error.
struct FieldNumber
{
    std::int64_t value;  ///< the nearest limit if the number passes 64 bits, 0 if there is none
    bool isFound;
};

/// The fields of a text, each as the number that it begins with. Only blanks separate fields.
class FieldReader
{
public:
    explicit FieldReader(char const* text) : _at(text) {}

    /// The next field's number: leading white space, a sign, then digits up to the first other character.
    ///
    ///     "\t-25x"  ->  -25
    ///     "+25"     ->  25
    ///     "+-25"    ->  not found
    ///     ""        ->  not found, as for a field that is missing
    ///
    FieldNumber next()
    {
        while (*_at == ' ')
            ++_at;
        while (*_at >= '\t' && *_at <= '\r')  // the white space of the "C" locale that doesn't separate fields
            ++_at;
        const bool isNegative = *_at == '-';
        if (isNegative || *_at == '+')
            ++_at;
        const FieldNumber number = digits(isNegative);
        while (*_at != ' ' && *_at != '\0')
            [[unlikely]]  // what is behind the number belongs to its field
            ++ _at;
        return number;
    }

private:
    /// In unsigned numbers, up to the magnitude of the lowest value, which no positive one has.
    FieldNumber digits(bool isNegative)
    {
        constexpr std::uint64_t most = std::numeric_limits<std::int64_t>::max();
        const std::uint64_t limit = isNegative ? most + 1 : most;
        char const* const first = _at;
        std::uint64_t magnitude = 0;
        for (unsigned digit; (digit = static_cast<unsigned>(*_at - '0')) <= 9; ++_at) {
            // Beyond this another digit may pass the limit; once at the limit the number stays there.
            if (magnitude >= most / 10 && (magnitude > most / 10 || digit > limit % 10)) [[unlikely]]
                magnitude = limit;
            else
                magnitude = magnitude * 10 + digit;
        }
        return {static_cast<std::int64_t>(isNegative ? 0 - magnitude : magnitude), _at != first};
    }

    char const* _at;
};

/// A term of the rate in 32 bits, whatever the width of `long`. Throws with `overflow` for a number that does not
/// fit, and with `malformed` for a field without a number, a missing one included.
inline int rateTermOf(FieldNumber number, ErrorCode malformed, ErrorCode overflow)
{
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

/// Three numbers with a blank between them; getDtTimeFromDtString() reads it back to the same time.
ArrayPtrRet<char> DtTimeUtil::getDtStringFromDtTime(DtTime const& time)
{
    char text[48];  // the longest form has 44 characters: 20, 11 and 11, and two blanks
    char* const last = text + sizeof text - 1;
    char* end = std::to_chars(text, last, std::int64_t(time.getCount())).ptr;
    *end++ = ' ';
    end = std::to_chars(end, last, time.getRate().getNumerator()).ptr;
    *end++ = ' ';
    end = std::to_chars(end, last, time.getRate().getDenominator()).ptr;
    *end++ = '\0';
    // Not by duplicateString(), which would measure the text.
    const std::size_t size = static_cast<std::size_t>(end - text);
    ArrayPtrRet<char> copy(new char[size]);
    std::memcpy(copy.get(), text, size);
    return copy;
}

DtTime DtTimeUtil::getDtTimeFromDtString(char const* text)
{
    FieldReader fields(text != nullptr ? text : "");
    const std::int64_t count = fields.next().value;  // 0 without a number, which is no error
    // The order of the throws is part of the interface: the numerator is checked before the denominator is looked at.
    const int numerator =
        rateTermOf(fields.next(), ErrorCode::ErrRateNumeratorMalformed, ErrorCode::ErrRateNumeratorOverflow);
    const int denominator =
        rateTermOf(fields.next(), ErrorCode::ErrRateDenominatorMalformed, ErrorCode::ErrRateDenominatorOverflow);
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
