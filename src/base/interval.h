#pragma once

#include <base/baseexport.h>

#include <initializer_list>

namespace Vn
{

/// A pair of bounds with interval arithmetic, tests for closed, open and half-open readings of the pair, and a
/// classification of how two intervals lie to each other.
///
///     Vn::Interval<float> range(1.0f, 3.0f);
///     range *= -2.0f;             // [-6, -2]
///     range.contains(-2.0f);      // true; containsExcl() says false
///
/// Nothing is normalised: a lower bound above the upper one stands, and isEmpty() tells. Comparisons are written so
/// that not-a-number takes a stated side. For float and double; of another type it is a plain pair, with those
/// operations that the type has.
/// A value; any thread its own copy.
/// Tests: tests/base/intervaltest.cpp.
template <class T>
class Interval
{
public:
    /// How this interval lies to another.
    enum Containment
    {
        ContDisjoint = 0,  ///< they don't meet
        ContInside = 1,    ///< this one lies within the other, or equals it
        ContPartial = 2,   ///< they overlap and neither holds the other
        ContSurrounds = 3  ///< this one holds the other and is larger
    };

    /// Both bounds are `value`.
    Interval(T value);

    /// As given, in either order.
    Interval(T lower, T upper);

    Interval& operator+=(T s);
    Interval& operator+=(Interval const& o);
    Interval& operator-=(T s);

    /// All differences: lower less the other's upper, upper less the other's lower.
    Interval& operator-=(Interval const& o);

    /// The bounds change places unless `s` is at or above 0, so for not-a-number too.
    Interval& operator*=(T s);

    /// Least and greatest product of the bounds. Not-a-number among the products isn't handled.
    Interval& operator*=(Interval const& o);

    /// The bounds change places unless `s` is at or above 0.
    Interval& operator/=(T s);

    /// The product with the reciprocals of the other's bounds. An interval that spans zero isn't treated specially.
    Interval& operator/=(Interval const& o);

    /// Cuts at `x` from both sides. Not-a-number becomes the upper bound.
    Interval& operator&=(T x);

    /// The intersection; empty if the two don't meet.
    Interval& operator&=(Interval const& o);

    /// Extends a bound to reach `x`.
    Interval& operator|=(T x);

    /// The hull of both.
    Interval& operator|=(Interval const& o);

    /// `x`, or the bound that it passes; the lower bound for not-a-number.
    T clamp(T x) const;

    T getLower() const;
    T getUpper() const;
    T getWidth() const;
    T getCenter() const;

    /// The upper bound is below the lower one, or one of them is not-a-number.
    bool isEmpty() const;

    /// The interval holds something: with its bounds (closed), or without them (open).
    bool isValidIncl() const;
    bool isValidExcl() const;

    /// Each bound within less than `eps` of the other's. Not-a-number passes for equal.
    bool isEqual(Interval const& o, T eps) const;

    /// How this interval lies to `o`, both taken with their bounds. Two that share an end point only are ContPartial.
    Containment getInclContainment(Interval const& o) const;

    /// How this interval lies to `o`, both taken without their bounds. Two that share an end point only are
    /// ContDisjoint, and so is a single point with itself.
    Containment getExclContainment(Interval const& o) const;

    // Whether `x`, or the whole of `o`, lies in this interval: with both bounds, with neither, without the lower, without
    // the upper.
    bool contains(T x) const;
    bool contains(Interval const& o) const;
    bool containsExcl(T x) const;
    bool containsExcl(Interval const& o) const;
    bool containsExclLower(T x) const;
    bool containsExclLower(Interval const& o) const;
    bool containsExclUpper(T x) const;
    bool containsExclUpper(Interval const& o) const;

private:
    void setToCorners(T a, T b, T c, T d);

    static const Containment _inclContMap[8];
    static const Containment _exclContMap[8];

    T _lower;
    T _upper;
};

extern template class VN_BASE_EXPORT Interval<float>;
extern template class VN_BASE_EXPORT Interval<double>;

}  // namespace Vn

#include <base/interval.imp>
