#pragma once

#include <base/baseexport.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <iosfwd>

namespace Vn
{

/// An exact fraction of two 32-bit integers. In stream time it is a rate in counts per second.
///
///     const Vn::Rational ntsc(30000, 1001);
///     ntsc == Vn::Rational(60000, 2002);    // true: both are kept in lowest terms
///     ntsc.getDouble();                     // 29.97002997...
///
/// `==` and `!=` compare exactly. The order operators compare the double values with an absolute tolerance of 1e-7.
/// So two rates that are closer than that are unequal, and yet `<` and `>` are false both ways, `<=` and `>=` true.
///
/// -2147483648 has no positive counterpart in 32 bits. A fraction with it stays unreduced, and as a denominator it
/// stays negative:
///
///     Rational(-2147483648, 2)  ->  -2147483648/2
///     Rational(1, -2147483648)  ->  -1/-2147483648
///
/// A value of 8 bytes, without allocation and usable before any package starts. Each thread may use its own copy.
/// Tests: tests/base/rationaltest.cpp.
class VN_BASE_EXPORT Rational
{
public:
    /// 1/1, not zero.
    Rational() : _numerator(1), _denominator(1) {}

    /// The fraction that setValue() makes of the two. Throws RationalEx::ExDenominatorZero for a zero denominator.
    Rational(int numerator, int denominator) : Rational() { setValue(numerator, denominator); }

    /// Stores the fraction in lowest terms with a positive denominator.
    ///
    ///     6, 3   ->  2/1
    ///     2, -4  ->  -1/2
    ///     0, -7  ->  0/1
    ///     1, 0   ->  throws RationalEx::ExDenominatorZero, and the old value stays
    ///
    void setValue(int numerator, int denominator)
    {
        if (denominator == 0)
            throwDenominatorZero();
        if (denominator < 0) {
            numerator = negate(numerator);
            denominator = negate(denominator);
        }
        _numerator = numerator;
        _denominator = denominator;
        if (numerator == 0)
            _denominator = 1;
        else
            lowestTerms();
    }

    /// The numerator in lowest terms, with the sign of the fraction.
    int getNumerator() const { return _numerator; }

    /// The denominator in lowest terms. Positive, unless it is -2147483648.
    int getDenominator() const { return _denominator; }

    /// @{
    /// Numerator by denominator, each converted to the type first: a float rounds terms beyond 2^24 before it
    /// divides.
    double getDouble() const { return static_cast<double>(_numerator) / static_cast<double>(_denominator); }
    float getFloat() const { return static_cast<float>(_numerator) / static_cast<float>(_denominator); }

    /// @}

    /// @{
    /// Denominator by numerator, in seconds per count if this is a rate.
    ///
    ///     25/1  ->  0.04
    ///     0/1   ->  infinity
    ///
    double getReciprocalDouble() const
    {
        return static_cast<double>(_denominator) / static_cast<double>(_numerator);
    }
    float getReciprocalFloat() const { return static_cast<float>(_denominator) / static_cast<float>(_numerator); }
    /// @}

    /// Writes `(30000/1001=29.97)`, the value in the stream's own number format.
    void dump(std::ostream& stream) const;

private:
    friend class DtTime;  // which knows some rates to be in lowest terms

    struct InLowestTerms
    {};

    /// Terms that need no reduction.
    Rational(int numerator, int denominator, InLowestTerms) : _numerator(numerator), _denominator(denominator) {}

    /// In two's complement: the most negative value stays what it is.
    static int negate(int value) { return static_cast<int>(0u - static_cast<unsigned>(value)); }

    [[noreturn]] static void throwDenominatorZero();

    /// Divides both terms by their greatest common divisor. Not for a zero numerator.
    // Intended: a fraction with -2147483648 stays as it is, although it could be reduced, because that number has no
    // magnitude in 32 bits; do not mend.
    void lowestTerms()
    {
        const int magnitude = _numerator < 0 ? negate(_numerator) : _numerator;
        if (magnitude <= 0 || _denominator <= 1)
            return;  // a term is the most negative value, or the fraction is a whole number
        const int divisor = greatestCommonDivisor(magnitude, _denominator);
        // Divides by 1 as well: a test for it would be an unpredictable branch, which costs more.
        _numerator /= divisor;
        _denominator /= divisor;
    }

    /// The binary algorithm of Stein (1967), which needs shifts and differences instead of divisions. Both arguments
    /// are positive. The shift is taken from the difference and not from its absolute value, so the processor can
    /// compute both at the same time.
    static int greatestCommonDivisor(int a, int b)
    {
        // One division first if the sizes differ much, as in products of rates: shifts would take many rounds.
        if ((a >> 6) > b && (a %= b) == 0)
            return b;
        if ((b >> 6) > a && (b %= a) == 0)
            return a;
        const int twos = countZeros(a | b);
        a >>= countZeros(a);
        b >>= countZeros(b);
        while (const int difference = b - a) {
            const int zeros = countZeros(difference);
            b = std::min(a, b);
            a = std::abs(difference) >> zeros;
        }
        return a << twos;
    }

    static int countZeros(int value) { return std::countr_zero(static_cast<unsigned>(value)); }

    friend bool operator<(Rational const& a, Rational const& b);
    friend bool operator<=(Rational const& a, Rational const& b);
    friend bool operator>(Rational const& a, Rational const& b);
    friend bool operator>=(Rational const& a, Rational const& b);

    struct Distance
    {
        std::int64_t difference;  ///< has the sign of b - a
        bool isFar;               ///< whether that sign decides; if not, the double values do
    };

    /// How far b is from a, in integers. They are far apart if the comparison of the double values, tolerance
    /// included, must have the same outcome as that of the fractions.
    ///
    /// Quotients are at most 2^31, so each double value is off by 2^-23 at most. With the tolerance of 1e-7 and the
    /// rounding of its sum that makes less than 2^-19, which is the margin below.
    static Distance distance(Rational const& a, Rational const& b)
    {
        const std::int64_t difference = static_cast<std::int64_t>(b._numerator) * a._denominator -
                                        static_cast<std::int64_t>(a._numerator) * b._denominator;
        const std::int64_t margin = (static_cast<std::int64_t>(a._denominator) * b._denominator) >> 19;
        const std::int64_t sign = difference >> 63;
        // One test for both directions, nearly always true, instead of one unpredictable branch for each. If the
        // denominators have different signs, the margin is negative, a huge unsigned number, and nothing is far.
        return {difference, static_cast<std::uint64_t>(difference ^ sign) > static_cast<std::uint64_t>(margin)};
    }

    int _numerator;
    int _denominator;
};

/// @{
/// Exact comparison of both terms, without the tolerance of the order operators.
///
///     1/3 == 33333333/100000000  ->  false
///
inline bool operator==(Rational const& a, Rational const& b)
{
    return a.getNumerator() == b.getNumerator() && a.getDenominator() == b.getDenominator();
}

inline bool operator!=(Rational const& a, Rational const& b)
{
    return !(a == b);
}
/// @}

/// @{
/// Comparison of the double values with an absolute tolerance of 1e-7, whatever the size of the rates.
///
///     a < b     b - 1e-7 > a     below by more than the tolerance
///     a <= b    b + 1e-7 > a     not above by the tolerance or more
///     a > b     a > b + 1e-7     above by more than the tolerance
///     a >= b    a > b - 1e-7     not below by the tolerance or more
///
/// For 1/3 and 33333333/100000000, which differ by 3.3e-9, `<` and `>` are false, `<=` and `>=` true.
// Intended: these tell rates apart more coarsely than `==` does; do not mend.
inline bool operator<(Rational const& a, Rational const& b)
{
    auto const [difference, isFar] = Rational::distance(a, b);
    if (isFar) [[likely]]
        return difference > 0;
    return b.getDouble() - 1e-7 > a.getDouble();
}

inline bool operator<=(Rational const& a, Rational const& b)
{
    auto const [difference, isFar] = Rational::distance(a, b);
    if (isFar) [[likely]]
        return difference > 0;
    return b.getDouble() + 1e-7 > a.getDouble();
}

inline bool operator>(Rational const& a, Rational const& b)
{
    auto const [difference, isFar] = Rational::distance(a, b);
    if (isFar) [[likely]]
        return difference < 0;
    return a.getDouble() > b.getDouble() + 1e-7;
}

inline bool operator>=(Rational const& a, Rational const& b)
{
    auto const [difference, isFar] = Rational::distance(a, b);
    if (isFar) [[likely]]
        return difference < 0;
    return a.getDouble() > b.getDouble() - 1e-7;
}
/// @}

/// Writes the fraction as Rational::dump() does: `(30000/1001=29.97)`.
VN_BASE_EXPORT std::ostream& operator<<(std::ostream& stream, Rational const& value);

}  // namespace Vn
