#include <base/interval.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>

using Vn::Interval;

namespace
{
template <class T>
constexpr T nanOf = std::numeric_limits<T>::quiet_NaN();

/// -1 stands for not-a-number.
struct ContainmentRow
{
    int lower, upper, otherLower, otherUpper, closed, open;
};

constexpr ContainmentRow containmentRows[] = {
#include "../reference/intervals.inc"
};

template <class T>
T valueOf(int value)
{
    return value == -1 ? nanOf<T> : static_cast<T>(value);
}

template <class T>
void expectBounds(Interval<T> const& interval, T lower, T upper)
{
    EXPECT_EQ(interval.getLower(), lower);
    EXPECT_EQ(interval.getUpper(), upper);
}

/// How two sets of points lie to each other, by looking at every half of a whole number. Open intervals hold the halves
/// between their bounds, closed ones the bounds as well.
template <class Holds>
int containmentOfSets(Holds const& inA, Holds const& inB)
{
    bool meet = false, aInB = true, bInA = true;
    for (double x = -1.0; x <= 5.0; x += 0.5) {
        meet = meet || (inA(x) && inB(x));
        aInB = aInB && (!inA(x) || inB(x));
        bInA = bInA && (!inB(x) || inA(x));
    }
    if (!meet)
        return 0;
    if (aInB)
        return 1;
    return bInA ? 3 : 2;
}

template <class T>
class IntervalTest : public testing::Test
{};

using Types = testing::Types<float, double>;
}  // namespace

static_assert(sizeof(Interval<float>) == 8 && sizeof(Interval<double>) == 16);
static_assert(std::is_trivially_copyable_v<Interval<double>>);

TYPED_TEST_SUITE(IntervalTest, Types);

TYPED_TEST(IntervalTest, isMadeOfOneValueOrTwo)
{
    using I = Interval<TypeParam>;
    expectBounds(I(TypeParam(2)), TypeParam(2), TypeParam(2));
    expectBounds(I(3, 1), TypeParam(3), TypeParam(1));  // nothing is put in order
}

TYPED_TEST(IntervalTest, addsAndSubtracts)
{
    using T = TypeParam;
    using I = Interval<T>;
    expectBounds(I(1, 3) += T(2), T(3), T(5));
    expectBounds(I(1, 3) += I(10, 20), T(11), T(23));
    expectBounds(I(1, 3) -= T(2), T(-1), T(1));
    expectBounds(I(1, 2) -= I(0, 1), T(0), T(2));
    I own(1, 3);
    I const& same = own;
    expectBounds(own -= same, T(-2), T(2));
    I result(0, 0);
    EXPECT_EQ(&(result += T(1)), &result);
    EXPECT_EQ(&(result -= I(1, 1)), &result);
}

TYPED_TEST(IntervalTest, multiplies)
{
    using T = TypeParam;
    using I = Interval<T>;
    expectBounds(I(1, 3) *= T(2), T(2), T(6));
    expectBounds(I(1, 3) *= T(-2), T(-6), T(-2));
    expectBounds(I(1, 3) *= T(0), T(0), T(0));
    expectBounds(I(1, 3) *= I(-1, 2), T(-3), T(6));
    expectBounds(I(-2, 3) *= I(-5, 4), T(-15), T(12));
    expectBounds(I(-2, -1) *= I(-5, -4), T(4), T(10));
    I own(-2, 3);
    I const& same = own;
    expectBounds(own *= same, T(-6), T(9));
}

TYPED_TEST(IntervalTest, divides)
{
    using T = TypeParam;
    using I = Interval<T>;
    expectBounds(I(2, 4) /= T(2), T(1), T(2));
    expectBounds(I(2, 4) /= T(-2), T(-2), T(-1));
    expectBounds(I(2, 4) /= I(1, 2), T(1), T(4));
    expectBounds(I(2, 4) /= I(-2, -1), T(-4), T(-1));
    expectBounds(I(2, 4) /= I(-1, 2), T(-4), T(2));  // spans zero, and nobody looks
    I own(1, 2);
    I const& same = own;
    expectBounds(own /= same, T(0.5), T(2));
}

TYPED_TEST(IntervalTest, dividesByTheReciprocals)
{
    using T = TypeParam;
    // 1/49 * 49 isn't 1 in either type, so the product with the reciprocal shows.
    const T reciprocal = T(1) / T(49);
    Interval<T> interval(49, 49);
    interval /= Interval<T>(49, 49);
    EXPECT_EQ(interval.getLower(), T(49) * reciprocal);
    if (std::is_same_v<T, double>) {
        EXPECT_NE(interval.getLower(), T(1));
    }
    Interval<T> plain(49, 49);
    plain /= T(49);
    EXPECT_EQ(plain.getLower(), T(1));  // a scalar divides
}

TYPED_TEST(IntervalTest, aFactorThatIsNotAtOrAboveZeroSwapsTheBounds)
{
    using T = TypeParam;
    using I = Interval<T>;
    // Only the swap tells apart what not-a-number does: an infinity keeps its place otherwise.
    I byNan(1, 3);
    byNan *= nanOf<T>;
    EXPECT_TRUE(std::isnan(byNan.getLower()) && std::isnan(byNan.getUpper()));
    I negativeZero(1, 3);
    negativeZero *= T(-0.0);  // at zero: no swap
    EXPECT_EQ(negativeZero.getLower(), T(0));
    expectBounds(I(1, 3) /= T(-1), T(-3), T(-1));
    constexpr T infinity = std::numeric_limits<T>::infinity();
    expectBounds(I(-1, 3) /= T(0), -infinity, infinity);
    expectBounds(I(-1, 3) /= T(-0.0), infinity, -infinity);  // at zero: the bounds keep their places
}

TYPED_TEST(IntervalTest, cuts)
{
    using T = TypeParam;
    using I = Interval<T>;
    expectBounds(I(0, 1) &= T(0.5), T(0.5), T(0.5));
    expectBounds(I(0, 1) &= T(2), T(2), T(1));
    expectBounds(I(0, 1) &= T(-1), T(0), T(-1));
    expectBounds(I(0, 1) &= T(1), T(1), T(1));
    I byNan(0, 1);
    byNan &= nanOf<T>;
    EXPECT_EQ(byNan.getLower(), T(0));
    EXPECT_TRUE(std::isnan(byNan.getUpper()));
    expectBounds(I(0, 3) &= I(1, 2), T(1), T(2));
    expectBounds(I(1, 2) &= I(0, 3), T(1), T(2));
    I empty(0, 1);
    expectBounds(empty &= I(2, 3), T(2), T(1));
    EXPECT_TRUE(empty.isEmpty());
    EXPECT_FALSE(empty.isValidIncl());
}

TYPED_TEST(IntervalTest, extends)
{
    using T = TypeParam;
    using I = Interval<T>;
    expectBounds(I(0, 1) |= T(2), T(0), T(2));
    expectBounds(I(0, 1) |= T(-2), T(-2), T(1));
    expectBounds(I(0, 1) |= T(0.5), T(0), T(1));
    expectBounds(I(0, 1) |= nanOf<T>, T(0), T(1));
    expectBounds(I(0, 1) |= I(-1, 0.5), T(-1), T(1));
    expectBounds(I(0, 1) |= I(3, 4), T(0), T(4));
}

TYPED_TEST(IntervalTest, clamps)
{
    using T = TypeParam;
    Interval<T> const unit(0, 1);
    EXPECT_EQ(unit.clamp(-1), T(0));
    EXPECT_EQ(unit.clamp(2), T(1));
    EXPECT_EQ(unit.clamp(T(0.25)), T(0.25));
    EXPECT_EQ(unit.clamp(0), T(0));
    EXPECT_EQ(unit.clamp(1), T(1));
    EXPECT_EQ(unit.clamp(nanOf<T>), T(0));
    EXPECT_EQ(Interval<T>(3, 1).clamp(2), T(3));  // not at or above the lower bound
    EXPECT_EQ(Interval<T>(3, 1).clamp(4), T(1));
}

TYPED_TEST(IntervalTest, measures)
{
    using T = TypeParam;
    EXPECT_EQ(Interval<T>(1, 4).getWidth(), T(3));
    EXPECT_EQ(Interval<T>(4, 1).getWidth(), T(-3));
    EXPECT_EQ(Interval<T>(1, 4).getCenter(), T(2.5));
    // The sum comes first, and may leave the type.
    constexpr T huge = std::numeric_limits<T>::max();
    EXPECT_EQ(Interval<T>(huge, huge).getCenter(), std::numeric_limits<T>::infinity());
}

TYPED_TEST(IntervalTest, tellsWhetherItHoldsAnything)
{
    using T = TypeParam;
    const struct
    {
        char const* what;
        T lower, upper;
        bool isEmpty, isValidIncl, isValidExcl;
    } table[] = {
        {"proper", 0, 1, false, true, true},
        {"point", 1, 1, false, true, false},
        {"inverted", 1, 0, true, false, false},
        {"not-a-number below", nanOf<T>, 1, true, false, true},
        {"not-a-number above", 0, nanOf<T>, true, false, true},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.what);
        Interval<T> const interval(row.lower, row.upper);
        EXPECT_EQ(interval.isEmpty(), row.isEmpty);
        EXPECT_EQ(interval.isValidIncl(), row.isValidIncl);
        EXPECT_EQ(interval.isValidExcl(), row.isValidExcl);
    }
}

TYPED_TEST(IntervalTest, equalsWithinATolerance)
{
    using T = TypeParam;
    Interval<T> const unit(0, 1);
    EXPECT_TRUE(unit.isEqual(Interval<T>(T(0.25), T(0.75)), T(0.5)));
    EXPECT_FALSE(unit.isEqual(Interval<T>(T(0.5), 1), T(0.5)));  // exactly the tolerance apart
    EXPECT_TRUE(unit.isEqual(Interval<T>(0, T(1.25)), T(0.5)));
    EXPECT_FALSE(unit.isEqual(Interval<T>(0, T(1.5)), T(0.5)));
    EXPECT_FALSE(unit.isEqual(Interval<T>(0, T(0.5)), T(0.5)));
    EXPECT_FALSE(unit.isEqual(Interval<T>(-1, 1), T(0.5)));
    EXPECT_FALSE(unit.isEqual(unit, 0));
    EXPECT_TRUE(unit.isEqual(Interval<T>(nanOf<T>, 1), T(0.5)));
}

TYPED_TEST(IntervalTest, containsPointsByItsReading)
{
    using T = TypeParam;
    Interval<T> const unit(0, 1);
    const struct
    {
        T x;
        bool contains, excl, exclLower, exclUpper;
    } table[] = {
        {-1, false, false, false, false}, {0, true, false, false, true},   {T(0.5), true, true, true, true},
        {1, true, false, true, false},    {2, false, false, false, false}, {nanOf<T>, false, false, false, false},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.x);
        EXPECT_EQ(unit.contains(row.x), row.contains);
        EXPECT_EQ(unit.containsExcl(row.x), row.excl);
        EXPECT_EQ(unit.containsExclLower(row.x), row.exclLower);
        EXPECT_EQ(unit.containsExclUpper(row.x), row.exclUpper);
    }
    // The upper bound is tested by "not above", so a bound that is not-a-number lets through.
    EXPECT_TRUE(Interval<T>(0, nanOf<T>).contains(T(5)));
    EXPECT_FALSE(Interval<T>(nanOf<T>, 1).contains(T(0)));
}

TYPED_TEST(IntervalTest, containsIntervalsByItsReading)
{
    using T = TypeParam;
    using I = Interval<T>;
    const I unit(0, 1);
    const struct
    {
        char const* what;
        I other;
        bool contains, excl, exclLower, exclUpper;
    } table[] = {
        {"itself", I(0, 1), true, false, false, false},
        {"inner", I(T(0.25), T(0.75)), true, true, true, true},
        {"touches below", I(0, T(0.5)), true, false, false, true},
        {"touches above", I(T(0.5), 1), true, false, true, false},
        {"beyond", I(T(0.5), 2), false, false, false, false},
        {"before", I(-1, T(0.5)), false, false, false, false},
        {"not-a-number below", I(nanOf<T>, T(0.5)), true, false, false, true},
        {"not-a-number above", I(T(0.5), nanOf<T>), true, false, true, false},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(unit.contains(row.other), row.contains);
        EXPECT_EQ(unit.containsExcl(row.other), row.excl);
        EXPECT_EQ(unit.containsExclLower(row.other), row.exclLower);
        EXPECT_EQ(unit.containsExclUpper(row.other), row.exclUpper);
    }
}

TYPED_TEST(IntervalTest, classifiesTheNamedCases)
{
    using I = Interval<TypeParam>;
    EXPECT_EQ(I(0, 1).getInclContainment(I(1, 2)), I::ContPartial);
    EXPECT_EQ(I(0, 1).getExclContainment(I(1, 2)), I::ContDisjoint);
    EXPECT_EQ(I(0, 1).getInclContainment(I(0, 1)), I::ContInside);
    EXPECT_EQ(I(0, 1).getExclContainment(I(0, 1)), I::ContInside);
    EXPECT_EQ(I(0, 3).getInclContainment(I(1, 2)), I::ContSurrounds);
    EXPECT_EQ(I(1, 2).getInclContainment(I(0, 3)), I::ContInside);
    EXPECT_EQ(I(0, 1).getInclContainment(I(2, 3)), I::ContDisjoint);
    EXPECT_EQ(I(1, 1).getExclContainment(I(1, 1)), I::ContDisjoint);
    EXPECT_EQ(I(1, 1).getInclContainment(I(1, 1)), I::ContInside);
}

TYPED_TEST(IntervalTest, classifiesAsTheReferenceDoes)
{
    using T = TypeParam;
    for (ContainmentRow const& row : containmentRows) {
        Interval<T> const a(valueOf<T>(row.lower), valueOf<T>(row.upper));
        Interval<T> const b(valueOf<T>(row.otherLower), valueOf<T>(row.otherUpper));
        SCOPED_TRACE(testing::Message() << '[' << row.lower << ", " << row.upper << "] to [" << row.otherLower
                                        << ", " << row.otherUpper << ']');
        EXPECT_EQ(static_cast<int>(a.getInclContainment(b)), row.closed);
        EXPECT_EQ(static_cast<int>(a.getExclContainment(b)), row.open);
    }
}

TYPED_TEST(IntervalTest, classifiesAsSetsOfPointsDo)
{
    using T = TypeParam;
    for (int a = 0; a <= 4; ++a) {
        for (int b = a; b <= 4; ++b) {
            for (int c = 0; c <= 4; ++c) {
                for (int d = c; d <= 4; ++d) {
                    SCOPED_TRACE(testing::Message() << '[' << a << ", " << b << "] to [" << c << ", " << d << ']');
                    Interval<T> const first(static_cast<T>(a), static_cast<T>(b));
                    Interval<T> const second(static_cast<T>(c), static_cast<T>(d));
                    auto const closed = [](double lower, double upper) {
                        return [lower, upper](double x) { return lower <= x && x <= upper; };
                    };
                    int expected = containmentOfSets(closed(a, b), closed(c, d));
                    // Sharing an end point only is an overlap, but a single point lies within what holds it.
                    EXPECT_EQ(static_cast<int>(first.getInclContainment(second)), expected);
                    if (a == b || c == d)
                        continue;  // open, a single point is no set to compare
                    auto const open = [](double lower, double upper) {
                        return [lower, upper](double x) { return lower < x && x < upper; };
                    };
                    expected = containmentOfSets(open(a, b), open(c, d));
                    EXPECT_EQ(static_cast<int>(first.getExclContainment(second)), expected);
                }
            }
        }
    }
}
