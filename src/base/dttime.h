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
/// Comparison is exact and converts nothing: it compares 64-bit products of counts and rate terms. Times of equal
/// rate combine as their counts do. Times of different rates are first converted to a common rate, the product of
/// their rates, with each count truncated toward zero; the result keeps that rate.
///
///     rates              common rate
///     25/1     30/1      750/1
///     2000/1   3000/1    1000000/1    the product 6000000/1 has a numerator beyond 1,000,000
///     1/2000   1/3000    1/1000000    the product has a denominator beyond 1,000,000
///     -2000/1  3000/1    -1000000/1   the limits keep the product's sign
///
/// Convert both times to a rate of your choice with convertRate() where that is not what you need. All five operators
/// treat counts as plain numbers, so even the quotient of two times has a rate.
///
/// A null rate is refused with DtEx::BadRate. A negative rate is accepted, and reverses the order operators. Overflow
/// is not detected, and neither is a zero divisor, which is an integer division fault of the processor as in
/// DtTimeIndex. An operator that throws leaves its left operand unchanged.
///
/// A value of 16 bytes, without allocation and usable before any package starts. Each thread may use its own copy.
/// Tests: tests/base/dttimetest.cpp.
class VN_BASE_EXPORT DtTime
{
public:
    /// 0 at 1/1.
    DtTime() = default;

    /// `count` units at `rate` counts per second. Throws DtEx::BadRate for a null rate.
    DtTime(DtTimeIndex const& count, Rational const& rate) : _count(count), _rate(rate)
    {
        if (rate.getNumerator() == 0)
            throwBadRate();
    }

    /// `count` units at the rate `numerator` / `denominator`, which is reduced to lowest terms.
    ///
    ///     DtTime(10, 50, 2)  ->  10 at 25/1
    ///     DtTime(10, 1, 0)   ->  throws RationalEx::ExDenominatorZero
    ///     DtTime(10, 0, 1)   ->  throws DtEx::BadRate
    ///
    DtTime(DtTimeIndex const& count, int numerator, int denominator)
        : DtTime(count, Rational(numerator, denominator))
    {}

    /// The count, in units of getRate().
    DtTimeIndex const& getCount() const { return _count; }

    /// Counts per second; never null.
    Rational const& getRate() const { return _rate; }

    /// Whether both rates are exactly the same, as `==` of Rational. Equal times may have different rates.
    bool isRateEqual(DtTime const& other) const { return _rate == other._rate; }

    /// This time at `rate`, its count truncated toward zero; a copy if it has that rate already.
    ///
    ///     30 at 30000/1001, to 48000/1  ->  48048 at 48000/1
    ///     1 at 50/1, to 25/1            ->  0 at 25/1
    ///     1 at 50/1, to 0/1             ->  throws DtEx::BadRate
    ///
    /// Products that pass 32 or 64 bits wrap without a report, see DtTimeIndex::convert(); a wrap to zero throws
    /// RationalEx::ExDenominatorZero.
    DtTime convertRate(Rational const& rate) const;

    /// Writes `(100 @ (25/1=25))`, the rate's value in the stream's own number format.
    void dump(std::ostream& stream) const;

    /// @{
    /// Applies the operation to the count alone. The rate stays and nothing is converted.
    ///
    ///     100 at 25/1  + 5  ->  105 at 25/1
    ///     -7 at 25/1   / 3  ->  -2 at 25/1
    ///     -7 at 25/1   % 3  ->  -1 at 25/1
    ///
    /// Wraps at 64 bits as DtTimeIndex does; a zero divisor is not checked.
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
    /// @}

    /// @{
    /// Moves by one unit of this time's own rate. The postfix forms return the time from before.
    DtTime& operator++();
    DtTime& operator--();
    DtTime operator++(int);
    DtTime operator--(int);
    /// @}

    /// @{
    /// Applies the operation to the counts: at this time's rate if both rates are equal, else at the common rate.
    ///
    ///     10 at 25/1   + 10 at 25/1   ->  20 at 25/1
    ///     25 at 25/1   + 30 at 30/1   ->  1500 at 750/1
    ///     1 at 2000/1  + 1 at 3000/1  ->  833 at 1000000/1, as the counts become 500 and 333
    ///
    /// Throws DtEx::BadRate if the product of the rates wraps to a null rate in 32 bits, and
    /// RationalEx::ExDenominatorZero if a denominator wraps to zero. A zero divisor is not checked.
    DtTime operator+(DtTime const& other) const { return DtTime(*this) += other; }
    DtTime operator-(DtTime const& other) const { return DtTime(*this) -= other; }
    DtTime operator*(DtTime const& other) const { return DtTime(*this) *= other; }
    DtTime operator/(DtTime const& other) const { return DtTime(*this) /= other; }
    DtTime operator%(DtTime const& other) const { return DtTime(*this) %= other; }
    DtTime& operator+=(DtTime const& other) { return *this = combined(*this, other, Operator::plus); }
    DtTime& operator-=(DtTime const& other) { return *this = combined(*this, other, Operator::minus); }
    DtTime& operator*=(DtTime const& other) { return *this = combined(*this, other, Operator::times); }
    DtTime& operator/=(DtTime const& other) { return *this = combined(*this, other, Operator::over); }
    DtTime& operator%=(DtTime const& other) { return *this = combined(*this, other, Operator::modulo); }
    /// @}

private:
    enum class Operator
    {
        plus,
        minus,
        times,
        over,
        modulo
    };

    [[noreturn]] static void throwBadRate();

    // Intended: counts are plain numbers to all five, so a product is not in square seconds; do not mend.
    static std::int64_t applied(std::int64_t a, std::int64_t b, Operator operation)
    {
        switch (operation) {
        case Operator::plus:
            return DtWrap::plus(a, b);
        case Operator::minus:
            return DtWrap::minus(a, b);
        case Operator::times:
            return DtWrap::times(a, b);
        case Operator::over:
            return DtWrap::over(a, b);
        default:
            return DtWrap::modulo(a, b);
        }
    }

    /// What the five operators with a time have in common. Times go in and out by value: they fit registers, and a
    /// time whose address is taken would be stored and read again.
    static DtTime combined(DtTime left, DtTime right, Operator operation)
    {
        if (left._rate != right._rate)
            return combinedAtCommonRate(left, right, operation);
        left._count = applied(left._count, right._count, operation);
        return left;
    }

    /// @{
    /// For times of different rates: for any, for usual ones whose product is above the limit, and the steps of the rule
    /// as they stand, for any. They throw what the operators throw.
    static DtTime combinedAtCommonRate(DtTime left, DtTime right, Operator operation);
    static DtTime combinedAtTheLimit(DtTime left, DtTime right, Operator operation);
    static DtTime combinedByTheRule(DtTime left, DtTime right, Operator operation);
    /// @}

    DtTimeIndex _count;
    Rational _rate;
};

/// @{
/// The two sides of every comparison: a count times its own rate's denominator and the other rate's numerator.
///
///     crossMultLhs(25 at 25/1, 30 at 30/1)  ->  1 * 30 * 25 = 750
///     crossMultRhs(25 at 25/1, 30 at 30/1)  ->  1 * 25 * 30 = 750
///
/// The products wrap at 64 bits without a report.
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
/// @}

/// @{
/// Exact comparison of the instants in seconds, whatever the rates: 25 at 25/1 equals 30 at 30/1.
///
/// Correct as long as both products of crossMultLhs() and crossMultRhs() fit 64 bits; beyond that the wrapped values
/// are compared. With one negative rate `<` and `>` are reversed.
// Intended: the rates' signs are not looked at, as a comparison is two products and nothing else; do not mend.
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
/// @}

/// Writes what DtTime::dump() writes.
VN_BASE_EXPORT std::ostream& operator<<(std::ostream& stream, DtTime const& time);

}  // namespace Vn
