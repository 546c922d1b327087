#pragma once

#include <base/baseexport.h>

#include <initializer_list>
#include <iosfwd>

namespace Vn
{

/// A lower and an upper bound, with interval arithmetic, tests whether a point or an interval lies inside, and a
/// classification of how two intervals lie to each other. The same pair is read as a closed, open or half-open
/// interval, by the name of the operation.
///
///     Vn::Interval<float> range(1.0f, 3.0f);
///     range *= -2.0f;                // [-6, -2]
///     range.contains(-2.0f);         // true: closed
///     range.containsExcl(-2.0f);     // false: open
///
/// The bounds are not put in order: a lower bound above the upper one is an empty interval, see isEmpty(). Where a
/// bound or an argument may be not-a-number, the comments say what happens.
///
/// The library holds it for float and double. With another T, such as DtTimeIndex, it is a pair with those operations
/// that T allows. A value without allocation; each thread may use its own copy. Nothing throws.
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

    /// Both bounds as given, in either order.
    Interval(T lower, T upper);

    /// @{
    /// All sums and all differences of a number of this interval and `s`, or a number of `o`.
    ///
    ///     [1, 3] += 2       ->  [3, 5]
    ///     [1, 3] += [0, 1]  ->  [1, 4]
    ///     [1, 2] -= 1       ->  [0, 1]
    ///     [1, 2] -= [0, 1]  ->  [0, 2]: `o`'s upper bound is subtracted from the lower one
    ///
    Interval& operator+=(T s);
    Interval& operator+=(Interval const& o);
    Interval& operator-=(T s);
    Interval& operator-=(Interval const& o);
    /// @}

    /// @{
    /// All products. The bounds swap for a negative `s`, and for not-a-number.
    ///
    ///     [1, 3] *= -2       ->  [-6, -2]
    ///     [1, 3] *= [-1, 2]  ->  [-3, 6]: the least and the greatest of the four products of bounds
    ///
    /// With intervals, a product that is not-a-number (0 * infinity) gives no defined bounds.
    Interval& operator*=(T s);
    Interval& operator*=(Interval const& o);
    /// @}

    /// @{
    /// All quotients, if `o` does not span zero. The bounds swap for a negative `s`, and for not-a-number.
    ///
    ///     [2, 4] /= -2       ->  [-2, -1]
    ///     [2, 4] /= [1, 2]   ->  [1, 4]
    ///     [2, 4] /= [-1, 1]  ->  [-4, 4]: only the bounds -1 and 1 are used, although 1 / 0 lies between
    ///
    /// Division by an interval multiplies with the reciprocals of its bounds, which rounds twice.
    Interval& operator/=(T s);
    Interval& operator/=(Interval const& o);
    /// @}

    /// @{
    /// The intersection; empty if there is nothing in common.
    ///
    ///     [0, 1] &= 0.5      ->  [0.5, 0.5]
    ///     [0, 1] &= 2        ->  [2, 1], empty
    ///     [0, 1] &= [2, 3]   ->  [2, 1], empty
    ///
    /// A point that is not-a-number becomes the upper bound; an `o` with such bounds changes nothing.
    Interval& operator&=(T x);
    Interval& operator&=(Interval const& o);
    /// @}

    /// @{
    /// The smallest interval that holds both.
    ///
    ///     [0, 1] |= 2        ->  [0, 2]
    ///     [0, 1] |= [2, 3]   ->  [0, 3]
    ///
    /// Not-a-number changes nothing.
    Interval& operator|=(T x);
    Interval& operator|=(Interval const& o);
    /// @}

    /// The number of this interval that is closest to `x`; the lower bound for not-a-number.
    ///
    ///     [0, 1], -1 -> 0    0.5 -> 0.5    2 -> 1
    ///
    T clamp(T x) const;

    /// @{
    /// The bounds as they stand, the upper less the lower, and their mean (the sum, which may overflow, times 0.5).
    ///
    ///     [2, 1]  ->  lower 2, upper 1, width -1, center 1.5
    ///
    T getLower() const;
    T getUpper() const;
    T getWidth() const;
    T getCenter() const;
    /// @}

    /// @{
    /// Whether there are numbers between the bounds.
    ///
    ///                  isEmpty   isValidIncl (closed)   isValidExcl (open)
    ///     [0, 1]       no        yes                    yes
    ///     [1, 1]       no        yes                    no
    ///     [1, 0]       yes       no                     no
    ///     with a nan   yes       no                     yes
    ///
    bool isEmpty() const;
    bool isValidIncl() const;
    bool isValidExcl() const;
    /// @}

    /// Whether each bound differs from `o`'s by less than `eps`. Not-a-number equals everything.
    bool isEqual(Interval const& o, T eps) const;

    /// @{
    /// How this interval lies to `o`, with both read as closed (Incl) or as open (Excl).
    ///
    ///     this      o         Incl            Excl
    ///     [0, 1]    [2, 3]    ContDisjoint    ContDisjoint
    ///     [0, 1]    [1, 2]    ContPartial     ContDisjoint     only the bound is common
    ///     [0, 2]    [1, 3]    ContPartial     ContPartial
    ///     [1, 2]    [0, 3]    ContInside      ContInside
    ///     [0, 1]    [0, 1]    ContInside      ContInside
    ///     [1, 1]    [1, 1]    ContInside      ContDisjoint     a single point, which is nothing without its bounds
    ///     [0, 3]    [1, 2]    ContSurrounds   ContSurrounds
    ///
    /// Meant for intervals that are not empty.
    Containment getInclContainment(Interval const& o) const;
    Containment getExclContainment(Interval const& o) const;
    /// @}

    /// @{
    /// Whether the point `x`, or all of `o`, lies in this interval. In the table the interval is [0, 1].
    ///
    ///                          0     1     [0, 1]    [0.2, 0.8]
    ///     contains             yes   yes   yes       yes          closed
    ///     containsExcl         no    no    no        yes          open
    ///     containsExclLower    no    yes   no        yes          without the lower bound
    ///     containsExclUpper    yes   no    no        yes          without the upper bound
    ///
    /// A point that is not-a-number is in no interval. Bounds of `o` that are not-a-number pass for contained by
    /// contains().
    bool contains(T x) const;
    bool contains(Interval const& o) const;
    bool containsExcl(T x) const;
    bool containsExcl(Interval const& o) const;
    bool containsExclLower(T x) const;
    bool containsExclLower(Interval const& o) const;
    bool containsExclUpper(T x) const;
    bool containsExclUpper(Interval const& o) const;
    /// @}

private:
    /// Makes the least and the greatest of the four the bounds.
    void setToCorners(T a, T b, T c, T d);

    /// @{
    /// Results of the two classifications, by an index of three comparisons; see interval.imp.
    static const Containment _inclContMap[8];
    static const Containment _exclContMap[8];
    /// @}

    T _lower;
    T _upper;
};

#if defined(VN_BASE_BUILDING)
// For the library's own sources alone: a copy that one of them compiled would be hidden, and hide the exported one. A
// program compiles the members that it uses, as a declared instance isn't inlined.
extern template class VN_BASE_EXPORT Interval<float>;
extern template class VN_BASE_EXPORT Interval<double>;
#endif

/// Writes `[0.5, 3]`: the bounds as they stand, in the stream's own number format.
///
/// A template, so that this header needs no more than the declaration of streams; the caller's source includes theirs.
template <class Traits, class T>
std::basic_ostream<char, Traits>& operator<<(std::basic_ostream<char, Traits>& stream, Interval<T> const& interval)
{
    return stream << '[' << interval.getLower() << ", " << interval.getUpper() << ']';
}

}  // namespace Vn

#include <base/interval.imp>
