#include "expectthrow.h"
#include "rnscripted.h"

#include <base/exinternalerror.h>
#include <base/rnhistogrambirng.h>
#include <base/rnhistogramrng.h>
#include <base/rnlecuyeruniformrng.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

using Vn::RnHistogram;
using Vn::RnHistogramBi;
using Vn::RnHistogramBiRng;
using Vn::RnHistogramRng;
using VnTest::ScriptedRng;

namespace
{
template <class T>
class RnHistogramRngTest : public testing::Test
{
protected:
    static constexpr T nan = std::numeric_limits<T>::quiet_NaN();

    /// Bins of the given weights over [0, count].
    static RnHistogram<T> of(std::vector<T> const& weights)
    {
        RnHistogram<T> histogram(static_cast<unsigned int>(weights.size()), T(0), static_cast<T>(weights.size()));
        for (std::size_t i = 0; i < weights.size(); ++i)
            histogram.addSample(static_cast<T>(i) + T(0.5), weights[i]);
        return histogram;
    }

    /// The running sum of the weights, as the generators form it.
    static std::vector<T> runningSum(std::vector<T> const& weights)
    {
        T sum = T(0);
        for (T weight : weights)
            sum += weight;
        std::vector<T> cumulative(1, T(0));
        for (T weight : weights)
            cumulative.push_back(cumulative.back() + T(1) / sum * weight);
        return cumulative;
    }

    /// The draw of `u` by a binary search over all of the running sum.
    static T searched(std::vector<T> const& cumulative, Vn::Vector<T> const& edges, T u)
    {
        auto const begin = cumulative.begin(), end = cumulative.end();
        u = u < T(0) ? T(0) : u;
        auto above = std::upper_bound(begin, end, u);
        if (above == end && u >= cumulative.back()) {
            u = cumulative.back();
            above = std::lower_bound(begin, end, u);
        }
        const std::size_t p =
            static_cast<std::size_t>(std::clamp(above - begin, std::ptrdiff_t(1), end - begin - 1));
        const T within = (u - cumulative[p - 1]) / (cumulative[p] - cumulative[p - 1]);
        return within * (edges[p] - edges[p - 1]) + edges[p - 1];
    }

    /// The numbers where a search may go wrong: every entry and its neighbours, the limits, and what lies between.
    static std::vector<T> limitsOf(std::vector<T> const& cumulative)
    {
        constexpr T infinity = std::numeric_limits<T>::infinity();
        std::vector<T> numbers = {T(-0.0),
                                  std::numeric_limits<T>::denorm_min(),
                                  std::nextafter(T(1), T(0)),
                                  T(1),
                                  T(1.5),
                                  infinity,
                                  -infinity,
                                  nan};
        for (T entry : cumulative)
            numbers.insert(numbers.end(),
                           {entry, std::nextafter(entry, infinity), std::nextafter(entry, -infinity)});
        for (int i = 0; i < 4096; ++i)
            numbers.push_back(static_cast<T>(i) / T(4096));
        return numbers;
    }

    static bool areSame(T a, T b) { return a == b || (std::isnan(a) && std::isnan(b)); }

    static T drawn(RnHistogram<T> const& histogram, T u)
    {
        ScriptedRng<T> source({u});
        return RnHistogramRng<T>(histogram, &source)();
    }
};

using Types = testing::Types<float, double>;
}  // namespace

TYPED_TEST_SUITE(RnHistogramRngTest, Types);

TYPED_TEST(RnHistogramRngTest, drawsInvertTheRunningSum)
{
    using T = TypeParam;
    RnHistogram<T> const histogram = this->of({T(1), T(3)});
    EXPECT_EQ(this->drawn(histogram, T(0)), T(0));
    EXPECT_EQ(this->drawn(histogram, T(0.125)), T(0.5));
    EXPECT_EQ(this->drawn(histogram, T(0.25)), T(1));  // the second bin's lower edge
    EXPECT_EQ(this->drawn(histogram, T(0.625)), T(1.5));
    EXPECT_LT(this->drawn(histogram, std::nextafter(T(0.25), T(0))), T(1));
}

TYPED_TEST(RnHistogramRngTest, drawsAreBitForBitTheRule)
{
    using T = TypeParam;
    std::vector<T> weights;
    for (int i = 0; i < 37; ++i)
        weights.push_back(static_cast<T>(i * 7 % 11));
    RnHistogram<T> const histogram = this->of(weights);
    const std::vector<T> cumulative = this->runningSum(weights);
    Vn::RnLecuyerUniformRng<T> uniform, same;
    RnHistogramRng<T> rng(histogram, &uniform);
    std::vector<T> samples(4000);
    rng.getSequence(3000, samples.data());
    for (std::size_t i = 3000; i < 4000; ++i)
        i % 2 == 0 ? rng.getSample(samples[i]) : static_cast<void>(samples[i] = rng());
    for (T sample : samples) {
        const T u = same();
        if (u >= cumulative.back())
            continue;  // has its own test
        std::size_t p = 0;
        while (!(cumulative[p] > u))
            ++p;
        const T t = (u - cumulative[p - 1]) / (cumulative[p] - cumulative[p - 1]);
        const T lower = histogram.getEdges()[p - 1], upper = histogram.getEdges()[p];
        ASSERT_EQ(sample, t * (upper - lower) + lower);
    }
}

TYPED_TEST(RnHistogramRngTest, everyDrawIsWhatASearchOfAllEntriesFinds)
{
    using T = TypeParam;
    auto const of = [](std::size_t count, auto weight) {
        std::vector<T> weights;
        for (std::size_t i = 0; i < count; ++i)
            weights.push_back(static_cast<T>(weight(i)));
        return weights;
    };
    std::uint32_t state = 1;
    auto const random = [&state](std::size_t) { return (state = state * 1664525 + 1013904223) >> 8; };
    struct Row
    {
        char const* what;
        std::vector<T> weights;
    };
    const Row table[] = {
        {"one bin", {T(7)}},
        {"equal bins", of(1000, [](std::size_t) { return 1; })},
        {"random bins", of(777, random)},
        {"mostly empty", of(3000, [](std::size_t i) { return i % 331 == 5 ? 1 : 0; })},
        {"empty at both ends", of(300, [](std::size_t i) { return i > 100 && i < 200 ? 3 : 0; })},
        {"only the first", of(500, [](std::size_t i) { return i == 0; })},
        {"only the last", of(500, [](std::size_t i) { return i == 499; })},
        {"one bin has nearly all", of(2000, [](std::size_t i) { return i == 1000 ? 1e6 : 1e-3; })},
        {"bins too small to move the sum", of(400, [](std::size_t i) { return i < 2 ? 1.0 : 1e-30; })},
        {"each twice the one before", of(60, [](std::size_t i) { return std::ldexp(1.0, static_cast<int>(i)); })},
        {"the sum falls", of(100, [](std::size_t i) { return i % 3 == 1 ? -1 : 2; })},
        {"the sum is negative", of(50, [](std::size_t i) { return i % 2 == 0 ? -3 : 1; })},
        {"the sum is zero", {T(1), T(-1), T(2), T(-2)}},
        {"infinite", {T(1), std::numeric_limits<T>::infinity(), T(1)}},
        {"the largest numbers", {std::numeric_limits<T>::max(), std::numeric_limits<T>::max()}},
        {"the smallest numbers", of(20, [](std::size_t) { return std::numeric_limits<T>::denorm_min(); })},
        {"not-a-number", {T(1), T(2), this->nan, T(1), T(2)}},
    };
    for (Row const& row : table) {
        SCOPED_TRACE(row.what);
        const std::vector<T> cumulative = this->runningSum(row.weights), numbers = this->limitsOf(cumulative);
        ScriptedRng<T> source(numbers);
        RnHistogram<T> const histogram = this->of(row.weights);
        RnHistogramRng<T> rng(histogram, &source);
        for (T number : numbers) {
            const T expected = this->searched(cumulative, histogram.getEdges(), number), sample = rng();
            ASSERT_TRUE(this->areSame(sample, expected)) << number << ": " << sample << ", not " << expected;
        }
    }
}

TYPED_TEST(RnHistogramRngTest, manyBinsShareTheSlotsOfTheSearch)
{
    using T = TypeParam;
    std::vector<T> weights;
    for (int i = 0; i < 300000; ++i)
        weights.push_back(static_cast<T>(i % 7));
    const std::vector<T> cumulative = this->runningSum(weights);
    std::vector<T> numbers;
    for (int i = 0; i < 5000; ++i)
        numbers.push_back(static_cast<T>(i) / T(5000));
    ScriptedRng<T> source(numbers);
    // Two dimensions, as bins may be added there by their place, and x shows the bin: all are in one row.
    RnHistogramBi<T> histogram(300000, 1, T(0), T(300000), T(0), T(1));
    for (std::size_t i = 0; i < weights.size(); ++i)
        histogram.addSample(static_cast<T>(i) + T(0.5), T(0), weights[i]);
    RnHistogramBiRng<T> rng(histogram, &source);
    for (int i = 0; i < 2500; ++i) {
        T x, y;
        rng.getSample(x, y);
        const T u = numbers[static_cast<std::size_t>(2 * i)];
        ASSERT_EQ(x, this->searched(cumulative, histogram.getXEdges(), u)) << u;
    }
}

TYPED_TEST(RnHistogramRngTest, aSourceBeyondItsRangeIsBounded)
{
    using T = TypeParam;
    RnHistogram<T> const histogram = this->of({T(0), T(1), T(3), T(0)});
    for (T u : {T(1), T(1.5), T(1e30), std::numeric_limits<T>::infinity()})
        EXPECT_EQ(this->drawn(histogram, u), T(3));  // the upper edge of the last bin that holds something
    for (T u : {T(-0.5), T(-1e30), -std::numeric_limits<T>::infinity(), T(-0.0)})
        EXPECT_EQ(this->drawn(histogram, u), T(1));
    EXPECT_TRUE(std::isnan(this->drawn(histogram, this->nan)));
    // Rounding can leave the last entry below 1; what lies between is bounded as well.
    for (int count = 1; count < 60; ++count) {
        RnHistogram<T> const even = this->of(std::vector<T>(static_cast<std::size_t>(count), T(1)));
        const T sample = this->drawn(even, std::nextafter(T(1), T(0)));
        EXPECT_TRUE(sample > static_cast<T>(count) - T(1) && sample <= static_cast<T>(count)) << count;
        const T last = this->drawn(even, T(1));  // the end itself, unless rounding has left the last entry above 1
        EXPECT_NEAR(last, static_cast<T>(count), static_cast<T>(8 * count) * std::numeric_limits<T>::epsilon());
        EXPECT_LE(last, static_cast<T>(count));
    }
}

TYPED_TEST(RnHistogramRngTest, anEmptyHistogramGivesNotANumber)
{
    using T = TypeParam;
    for (T u : {T(0), T(0.5), T(1), this->nan}) {
        EXPECT_TRUE(std::isnan(this->drawn(this->of({T(0), T(0), T(0)}), u)));
        EXPECT_TRUE(std::isnan(this->drawn(RnHistogram<T>(0, T(0), T(1)), u)));
        EXPECT_TRUE(std::isnan(this->drawn(this->of({T(1), this->nan, T(1)}), u)));
    }
    // Weights that cancel, or whose running sum falls, stay within the object.
    for (T u : {T(0), T(0.5), T(1)}) {
        this->drawn(this->of({T(1), T(-1)}), u);
        this->drawn(this->of({T(3), T(-2), T(1)}), u);
        this->drawn(this->of({T(-3), T(2), T(-1)}), u);
    }
}

TYPED_TEST(RnHistogramRngTest, tellsItsRangeAndDensity)
{
    using T = TypeParam;
    RnHistogram<T> const histogram = this->of({T(1), T(3)});
    ScriptedRng<T> source({T(0)});
    std::string journal;
    source.journal = &journal;
    RnHistogramRng<T> rng(histogram, &source);
    EXPECT_STREQ(rng.getName(), "Histogram");
    EXPECT_EQ(rng.getPdf(T(0)), T(0.25));
    EXPECT_EQ(rng.getPdf(T(1)), T(0.75));
    EXPECT_EQ(rng.getPdf(T(2)), T(0));
    EXPECT_EQ(rng.getPdf(T(-0.1)), T(0));
    EXPECT_EQ(rng.getPdf(this->nan), T(0));
    EXPECT_EQ(rng.getEfficientWidth(), T(2));
    EXPECT_EQ(rng.getEfficientMin(), T(0));
    EXPECT_EQ(rng.getEfficientMax(), T(2));
    EXPECT_EQ(rng.getEfficientFraction(), T(1));
    rng.restart();
    EXPECT_EQ(journal, "r");
    const T edges[] = {T(0), T(4)};
    RnHistogram<T> wide(1, edges);
    wide.addSample(T(1), T(9));
    EXPECT_EQ(RnHistogramRng<T>(wide, &source).getPdf(T(1)), T(0.25));
    EXPECT_EQ(RnHistogramRng<T>(RnHistogram<T>(0, T(0), T(1)), &source).getPdf(T(0.5)), T(0));
}

TYPED_TEST(RnHistogramRngTest, isASnapshot)
{
    using T = TypeParam;
    RnHistogram<T> histogram = this->of({T(1), T(3)});
    ScriptedRng<T> source({T(0.25)});
    RnHistogramRng<T> rng(histogram, &source);
    histogram.clear();
    EXPECT_EQ(rng(), T(1));
}

TYPED_TEST(RnHistogramRngTest, planarDrawsUseTheFirstNumberTwice)
{
    using T = TypeParam;
    const T xEdges[] = {T(0), T(1), T(3)}, yEdges[] = {T(-1), T(0), T(4)};
    RnHistogramBi<T> histogram(2, 2, xEdges, yEdges);
    histogram.addSample(T(0), T(-1), T(1));
    histogram.addSample(T(2), T(-1), T(1));
    histogram.addSample(T(0), T(1), T(2));
    histogram.addSample(T(2), T(1), T(4));
    ScriptedRng<T> source({T(0), T(0.25), T(0.1875), T(0.5), T(0.25), T(0.5), T(0.75), T(0.75)});
    RnHistogramBiRng<T> rng(histogram, &source);
    const T expected[][2] = {{T(0), T(-0.75)}, {T(2), T(-0.5)}, {T(0), T(2)}, {T(2), T(3)}};
    T xs[4], ys[4];
    for (auto const& point : expected) {
        T x, y;
        rng.getSample(x, y);
        EXPECT_TRUE(x == point[0] && y == point[1]);
    }
    rng.restart();
    rng.getSequence(4, xs, ys);
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_TRUE(xs[i] == expected[i][0] && ys[i] == expected[i][1]);
    rng.getSequence(0, nullptr, nullptr);
    histogram.clear();
    EXPECT_EQ(rng.getPdf(T(2), T(1)), T(0.5));  // a snapshot
}

TYPED_TEST(RnHistogramRngTest, planarSequenceHasTheSinglePointsOfADerivedClass)
{
    using T = TypeParam;
    class Fixed : public RnHistogramBiRng<T>
    {
    public:
        using RnHistogramBiRng<T>::RnHistogramBiRng;
        void getSample(T& x, T& y) override { x = y = T(9); }
    };
    ScriptedRng<T> source({T(0)});
    Fixed rng(RnHistogramBi<T>(1, 1, T(0), T(1), T(0), T(1)), &source);
    T x = T(0), y = T(0);
    rng.getSequence(1, &x, &y);
    EXPECT_TRUE(x == T(9) && y == T(9));
}

TYPED_TEST(RnHistogramRngTest, planarDensityIsTheBinsShare)
{
    using T = TypeParam;
    RnHistogramBi<T> histogram(2, 2, T(0), T(8), T(0), T(100));
    for (T x : {T(1), T(5)})
        for (T y : {T(1), T(60)})
            histogram.addSample(x, y, T(3));
    ScriptedRng<T> source({T(0)});
    const RnHistogramBiRng<T> rng(histogram, &source);
    EXPECT_EQ(rng.getPdf(T(0), T(0)), T(0.25));  // whatever the area
    EXPECT_EQ(rng.getPdf(T(7), T(99)), T(0.25));
    for (auto const& [x, y] : std::vector<std::pair<T, T>>{
             {T(8), T(1)}, {T(1), T(100)}, {T(-1), T(1)}, {T(1), T(-1)}, {this->nan, T(1)}, {T(1), this->nan}})
        EXPECT_EQ(rng.getPdf(x, y), T(0));
    T x, y;
    rng.getEfficientWidth(x, y);
    EXPECT_TRUE(x == T(8) && y == T(100));
    rng.getEfficientMin(x, y);
    EXPECT_TRUE(x == T(0) && y == T(0));
    rng.getEfficientMax(x, y);
    EXPECT_TRUE(x == T(8) && y == T(100));
    EXPECT_EQ(rng.getEfficientFraction(), T(1));
    EXPECT_STREQ(rng.getName(), "HistogramBi");
}

TYPED_TEST(RnHistogramRngTest, planarBadInputIsBounded)
{
    using T = TypeParam;
    RnHistogramBi<T> histogram(2, 2, T(0), T(2), T(0), T(2));
    histogram.addSample(T(0.5), T(1.5), T(1));
    auto const drawn = [](RnHistogramBi<T> const& from, T u, T v) {
        ScriptedRng<T> source({u, v});
        T x, y;
        RnHistogramBiRng<T>(from, &source).getSample(x, y);
        return std::pair<T, T>(x, y);
    };
    EXPECT_EQ(drawn(histogram, T(1), T(1)), (std::pair<T, T>(T(1), T(2))));
    EXPECT_EQ(drawn(histogram, T(-1), T(0)), (std::pair<T, T>(T(0), T(1))));
    EXPECT_TRUE(std::isnan(drawn(histogram, this->nan, T(0.5)).first));
    EXPECT_TRUE(std::isnan(drawn(RnHistogramBi<T>(2, 2, T(0), T(2), T(0), T(2)), T(0.5), T(0.5)).first));
    for (auto const& [nx, ny] : {std::pair(0u, 0u), std::pair(0u, 2u), std::pair(2u, 0u)}) {
        RnHistogramBi<T> const none(nx, ny, T(0), T(1), T(0), T(1));
        EXPECT_TRUE(std::isnan(drawn(none, T(0.5), T(0.5)).first));
        ScriptedRng<T> source({T(0)});
        EXPECT_EQ(RnHistogramBiRng<T>(none, &source).getPdf(T(0.5), T(0.5)), T(0));
    }
}

TYPED_TEST(RnHistogramRngTest, sourcesAreChecked)
{
    using T = TypeParam;
    RnHistogram<T> const line(2, T(0), T(1));
    RnHistogramBi<T> const area(2, 2, T(0), T(1), T(0), T(1));
    auto const expectRefused = [](auto const& call, char const* file) {
        VnTest::expectThrow<Vn::ExInternalError, std::runtime_error>(call, "Assertion '_rng' failed.");
        try {
            call();
        } catch (Vn::ExBase const& failure) {
            EXPECT_STREQ(failure.getFileName(), file);
        }
    };
    expectRefused([&] { RnHistogramRng<T> bad(line, nullptr); }, "src/base/rnhistogramrng");
    expectRefused([&] { RnHistogramBiRng<T> bad(area, nullptr); }, "src/base/rnhistogrambirng");
}

// The lines of use and the examples of edges that the classes' comments show.

TEST(RnHistogramRng, isUsedAsItsCommentShows)
{
    RnHistogram<double> histogram(2, 0.0, 2.0);
    histogram.addSample(0.5, 1.0);
    histogram.addSample(1.5, 3.0);
    ScriptedRng<double> uniform({0.125, 0.25, 0.625});
    Vn::RnHistogramRng<double> likeIt(histogram, &uniform);
    for (double expected : {0.5, 1.0, 1.5}) {
        const double number = likeIt();
        EXPECT_EQ(number, expected);
    }
    EXPECT_EQ(likeIt.getPdf(0.5), 0.25);
    EXPECT_EQ(likeIt.getPdf(1.0), 0.75);
    EXPECT_EQ(likeIt.getPdf(2.0), 0.0);
}

TEST(RnHistogramBiRng, isUsedAsItsCommentShows)
{
    RnHistogramBi<float> histogram(2, 1, 0.0f, 2.0f, 0.0f, 1.0f);
    histogram.addSample(0.5f, 0.5f, 1.0f);
    histogram.addSample(1.5f, 0.5f, 3.0f);
    ScriptedRng<float> uniform({0.625f, 0.5f});
    float x, y;
    Vn::RnHistogramBiRng<float> likeIt(histogram, &uniform);
    likeIt.getSample(x, y);
    EXPECT_TRUE(x == 1.5f && y == 0.5f);

    RnHistogramBi<double> even(2, 2, 0.0, 1.0, 0.0, 1.0);
    for (double u : {0.2, 0.7})
        for (double v : {0.2, 0.7})
            even.addSample(u, v, 1.0);
    ScriptedRng<double> draws({0.125, 0.5});
    RnHistogramBiRng<double> points(even, &draws);
    double u, v;
    points.getSample(u, v);
    EXPECT_TRUE(u == 0.25 && v == 0.25);
    EXPECT_EQ(points.getPdf(0.9, 0.1), 0.25);
}
