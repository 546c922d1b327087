#pragma once

#include <base/dttimeindex.h>

#include <iosfwd>

namespace Vn
{

/// A position or a duration on a stream: a count and the rate, in counts per second, that gives it a meaning.
///
///     Vn::DtTime position(25, Vn::Rational(25, 1));
///     position == Vn::DtTime(48000, 48000, 1);    // true: the same instant
///     position += Vn::DtTime(30, 30, 1);          // 1500 at 750/1, two seconds
///
/// Comparison is exact and converts nothing: it crosses counts and rates in 64-bit products, which wrap. Times of
/// equal rate combine as their counts do. Times of different rates first meet at the product of their rates, each
/// count truncated toward zero there, and the result keeps that rate. A product with a term beyond 1,000,000
/// collapses onto 1000000/1 or 1/1000000 (with its sign). The five operators treat counts as plain numbers: the
/// quotient of two times has a rate too.
///
/// A null rate is refused with DtEx::BadRate, a negative one isn't; it turns `<` and `>` around. Overflow is not
/// detected, nor is a zero divisor: that is the machine's integer division fault, as in DtTimeIndex. An operator that
/// throws leaves its left operand as it was.
///
/// A value of 16 bytes; no allocation, no start-up, any thread its own copy.
/// Tests: tests/base/dttimetest.cpp.
class VN_BASE_EXPORT DtTime
{
public:
    /// 0 at 1/1.
    DtTime() = default;

    /// Throws DtEx::BadRate for a null rate.
    DtTime(DtTimeIndex const& count, Rational const& rate) : _count(count), _rate(rate)
    {
        if (rate.getNumerator() == 0)
            throwBadRate();
    }

    /// Throws RationalEx::ExDenominatorZero, or else DtEx::BadRate for a null rate.
    DtTime(DtTimeIndex const& count, int numerator, int denominator)
        : DtTime(count, Rational(numerator, denominator))
    {}

    DtTimeIndex const& getCount() const { return _count; }
    Rational const& getRate() const { return _rate; }

    /// Exactly the same rate.
    bool isRateEqual(DtTime const& other) const { return _rate == other._rate; }

    /// This time at `rate`, truncated toward zero; a copy if it has that rate already. Throws as
    /// DtTimeIndex::convert(), and DtEx::BadRate for a null rate.
    DtTime convertRate(Rational const& rate) const;

    /// "(100 @ (25/1=25))".
    void dump(std::ostream& stream) const;

    // With a bare count: the rate stays and nothing is converted.
    DtTime operator+(DtTimeIndex const& other) const { return DtTime(*this) += other; }
    DtTime operator-(DtTimeIndex const& other) const { return DtTime(*this) -= other; }
    DtTime operator*(DtTimeIndex const& other) const { return DtTime(*this) *= other; }
    DtTime operator/(DtTimeIndex const& other) const { return DtTime(*this) /= other; }
    DtTime operator%(DtTimeIndex const& other) const { return DtTime(*this) %= other; }
    DtTime& operator+=(DtTimeIndex const& other);
    DtTime& operator-=(DtTimeIndex const& other);
    DtTime& operator*=(DtTimeIndex const& other);
    DtTime& operator/=(DtTimeIndex const& other);
    DtTime& operator%=(DtTimeIndex const& other);

    /// One unit of this time's own rate.
    DtTime& operator++();
    DtTime& operator--();
    DtTime operator++(int);
    DtTime operator--(int);

    // With a time, at a common rate if the rates differ; DtEx::BadRate or RationalEx::ExDenominatorZero if the
    // product of the rates wraps to a null rate or to none.
    DtTime operator+(DtTime const& other) const { return DtTime(*this) += other; }
    DtTime operator-(DtTime const& other) const { return DtTime(*this) -= other; }
    DtTime operator*(DtTime const& other) const { return DtTime(*this) *= other; }
    DtTime operator/(DtTime const& other) const { return DtTime(*this) /= other; }
    DtTime operator%(DtTime const& other) const { return DtTime(*this) %= other; }
    DtTime& operator+=(DtTime const& other);
    DtTime& operator-=(DtTime const& other);
    DtTime& operator*=(DtTime const& other);
    DtTime& operator/=(DtTime const& other);
    DtTime& operator%=(DtTime const& other);

private:
    [[noreturn]] static void throwBadRate();

    template <class Operation>
    DtTime& combine(DtTime const& other, Operation operation);

    DtTimeIndex _count;
    Rational _rate;
};

/// The two sides of every comparison: each count times the other's rate numerator and its own rate denominator, in 64
/// bits that wrap.
inline DtTimeIndex crossMultLhs(DtTime const& lhs, DtTime const& rhs)
{
    return DtWrap::times(DtWrap::times(lhs.getRate().getDenominator(), rhs.getRate().getNumerator()),
                         lhs.getCount());
}

inline DtTimeIndex crossMultRhs(DtTime const& lhs, DtTime const& rhs)
{
    return DtWrap::times(DtWrap::times(rhs.getRate().getDenominator(), lhs.getRate().getNumerator()),
                         rhs.getCount());
}

/// The same instant, whatever the rates.
inline bool operator==(DtTime const& a, DtTime const& b)
{
    return std::int64_t(crossMultLhs(a, b)) == std::int64_t(crossMultRhs(a, b));
}

inline bool operator!=(DtTime const& a, DtTime const& b)
{
    return std::int64_t(crossMultLhs(a, b)) != std::int64_t(crossMultRhs(a, b));
}

inline bool operator<(DtTime const& a, DtTime const& b)
{
    return std::int64_t(crossMultLhs(a, b)) < std::int64_t(crossMultRhs(a, b));
}

inline bool operator<=(DtTime const& a, DtTime const& b)
{
    return std::int64_t(crossMultLhs(a, b)) <= std::int64_t(crossMultRhs(a, b));
}

inline bool operator>(DtTime const& a, DtTime const& b)
{
    return std::int64_t(crossMultLhs(a, b)) > std::int64_t(crossMultRhs(a, b));
}

inline bool operator>=(DtTime const& a, DtTime const& b)
{
    return std::int64_t(crossMultLhs(a, b)) >= std::int64_t(crossMultRhs(a, b));
}

/// Writes what DtTime::dump() writes.
VN_BASE_EXPORT std::ostream& operator<<(std::ostream& stream, DtTime const& time);

}  // namespace Vn
