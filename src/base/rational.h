#pragma once

#include <base/baseexport.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <iosfwd>

namespace Vn
{

/// An exact fraction of two 32-bit integers, as a rule a rate in counts per second.
///
///     const Vn::Rational ntsc(30000, 1001);
///     ntsc == Vn::Rational(60000, 2002);    // true: lowest terms, the sign above the line
///     ntsc.getDouble();                     // 29.97002997...
///
/// `==` and `!=` compare exactly. The order operators compare the double values with an absolute tolerance of 1e-7, so
/// two rates closer than that are unequal, neither is below the other, and both are at or below each other.
///
/// -2147483648 has no positive counterpart in 32 bits. A fraction that holds it stays unreduced, and below the line it
/// stays negative.
///
/// A value of 8 bytes; no allocation, no start-up, any thread its own copy.
/// Tests: tests/base/rationaltest.cpp.
class VN_BASE_EXPORT Rational
{
public:
    /// 1/1, not zero.
    Rational() : _numerator(1), _denominator(1) {}

    /// As setValue().
    Rational(int numerator, int denominator) { setValue(numerator, denominator); }

    /// Brings the fraction to lowest terms with a positive denominator; zero becomes 0/1. Throws
    /// RationalEx::ExDenominatorZero for a zero denominator and then leaves the value as it was.
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

    int getNumerator() const { return _numerator; }
    int getDenominator() const { return _denominator; }

    double getDouble() const { return static_cast<double>(_numerator) / static_cast<double>(_denominator); }
    float getFloat() const { return static_cast<float>(_numerator) / static_cast<float>(_denominator); }

    /// Seconds per count of a rate; an infinity for zero.
    double getReciprocalDouble() const
    {
        return static_cast<double>(_denominator) / static_cast<double>(_numerator);
    }
    float getReciprocalFloat() const { return static_cast<float>(_denominator) / static_cast<float>(_numerator); }

    /// "(30000/1001=29.97)", the value in the stream's own number format.
    void dump(std::ostream& stream) const;

private:
    /// In two's complement: the most negative value stays what it is.
    static int negate(int value) { return static_cast<int>(0u - static_cast<unsigned>(value)); }

    [[noreturn]] static void throwDenominatorZero();

    void lowestTerms()
    {
        const int magnitude = _numerator < 0 ? negate(_numerator) : _numerator;
        if (magnitude <= 0 || _denominator <= 1)
            return;  // the most negative value, which has no divisor to speak of, or a whole number
        const int divisor = greatestCommonDivisor(magnitude, _denominator);
        // By 1 too, as every other time or so: dividing is cheaper than a branch that nobody can predict.
        _numerator /= divisor;
        _denominator /= divisor;
    }

    /// By shifts and differences (Stein 1967), which need no division; both arguments are positive. The shift is read
    /// off the difference while its sign is still being dealt with.
    static int greatestCommonDivisor(int a, int b)
    {
        // One division brings terms of very different sizes, as products of rates have, to like ones.
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

    /// b less a, times a positive number; `isFar` tells that they are so far apart that neither the tolerance nor the
    /// rounding of the two quotients can matter. The quotients are at most 2^31, so each is off by 2^-23 at most, and
    /// with the tolerance and the rounding of its sum that makes less than 2^-19.
    static std::int64_t compareExactly(Rational const& a, Rational const& b, bool& isFar)
    {
        const std::int64_t difference = static_cast<std::int64_t>(b._numerator) * a._denominator -
                                        static_cast<std::int64_t>(a._numerator) * b._denominator;
        const std::int64_t margin = (static_cast<std::int64_t>(a._denominator) * b._denominator) >> 19;
        const std::int64_t sign = difference >> 63;
        // One test, which nearly always comes out true, instead of one for each direction, which nobody can predict. Of
        // two denominators with different signs the margin is negative, and then nothing is far.
        isFar = static_cast<std::uint64_t>(difference ^ sign) > static_cast<std::uint64_t>(margin);
        return difference;
    }

    int _numerator;
    int _denominator;
};

/// Exactly the same fraction.
inline bool operator==(Rational const& a, Rational const& b)
{
    return a.getNumerator() == b.getNumerator() && a.getDenominator() == b.getDenominator();
}

inline bool operator!=(Rational const& a, Rational const& b)
{
    return !(a == b);
}

/// Below by more than 1e-7.
inline bool operator<(Rational const& a, Rational const& b)
{
    bool isFar;
    const std::int64_t difference = Rational::compareExactly(a, b, isFar);
    if (isFar) [[likely]]
        return difference > 0;
    return b.getDouble() - 1e-7 > a.getDouble();
}

/// Not above by 1e-7 or more.
inline bool operator<=(Rational const& a, Rational const& b)
{
    bool isFar;
    const std::int64_t difference = Rational::compareExactly(a, b, isFar);
    if (isFar) [[likely]]
        return difference > 0;
    return b.getDouble() + 1e-7 > a.getDouble();
}

/// Above by more than 1e-7.
inline bool operator>(Rational const& a, Rational const& b)
{
    bool isFar;
    const std::int64_t difference = Rational::compareExactly(a, b, isFar);
    if (isFar) [[likely]]
        return difference < 0;
    return a.getDouble() > b.getDouble() + 1e-7;
}

/// Not below by 1e-7 or more.
inline bool operator>=(Rational const& a, Rational const& b)
{
    bool isFar;
    const std::int64_t difference = Rational::compareExactly(a, b, isFar);
    if (isFar) [[likely]]
        return difference < 0;
    return a.getDouble() > b.getDouble() - 1e-7;
}

}  // namespace Vn
