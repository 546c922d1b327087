#include "rndumps.h"
#include "rnscripted.h"

#include <base/rnbins_p.h>
#include <base/rngaussianrng.h>
#include <base/rnhistogram.h>
#include <base/rnhistogramrng.h>
#include <base/rnlecuyeruniformrng.h>
#include <base/rnmexicanhatrng.h>
#include <base/rnvandercorputrng.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <iterator>
#include <limits>
#include <sstream>
#include <vector>

using Vn::RnHistogram;
using Vn::RnLecuyerUniformRng;
using Vn::RnUniformHistogram;
using VnTest::dumpOf;
using VnTest::flushesEachLine;
using VnTest::reckonedDump;
using VnTest::sceneOf;
using VnTest::ScriptedRng;

namespace
{
template <class T>
class RnHistogramTest : public testing::Test
{
protected:
    static constexpr T nan = std::numeric_limits<T>::quiet_NaN();
    static constexpr T infinity = std::numeric_limits<T>::infinity();
};

using Types = testing::Types<float, double>;

/// The rule of the search.
template <class T>
int plainBin(Vn::Vector<T> const& edges, T x)
{
    return static_cast<int>(std::upper_bound(edges.begin(), edges.end(), x) - edges.begin()) - 1;
}

/// The rule of adding, one by one.
template <class T>
struct PlainHistogram
{
    explicit PlainHistogram(RnHistogram<T> const& like) : model(like), bins(like.getBins().size()) {}

    void add(T x, T weight)
    {
        const int bin = model.getBin(x);
        if (bin >= 0 && static_cast<std::size_t>(bin) < bins.size()) {
            bins[static_cast<std::size_t>(bin)] += weight;
            total += weight;
        }
    }

    void expectIs(RnHistogram<T> const& histogram) const
    {
        EXPECT_EQ(histogram.getTotal(), total);
        EXPECT_TRUE(std::equal(bins.begin(), bins.end(), histogram.getBins().begin(), histogram.getBins().end()));
    }

    RnHistogram<T> const& model;
    std::vector<T> bins;
    T total = T(0);
};

/// One of the library's own generators, so that it is asked in bulk, which gives the same number for ever.
template <class T>
struct ConstantSource
{
    explicit ConstantSource(T value) : rng(&zeros, value, std::numeric_limits<T>::min() * T(4)) {}

    Vn::RnVanDerCorputRng<T> zeros{1};  ///< base 1: 0 for every point, so the lower end of what is below
    Vn::RnMexicanHatRng<T> rng;         ///< a triangle too narrow to have an end of its own
};

/// Gives the first number, the second, the first again, and then fails.
template <class T>
class FailingRng : public ScriptedRng<T>
{
public:
    explicit FailingRng(T first = T(0.1), T second = T(0.9)) : ScriptedRng<T>({first, second}) {}
    T operator()() override
    {
        if (this->draws == 3)
            throw 1;
        return ScriptedRng<T>::operator()();
    }
};
}  // namespace

TYPED_TEST_SUITE(RnHistogramTest, Types);

TYPED_TEST(RnHistogramTest, edgesDivideTheRangeEvenly)
{
    using T = TypeParam;
    const RnHistogram<T> histogram(4, T(0), T(1));
    EXPECT_EQ(histogram.getEdges(), (Vn::Vector<T>{T(0), T(0.25), T(0.5), T(0.75), T(1)}));
    const T min = T(-1) / T(3), max = T(10) / T(7);
    const RnHistogram<T> odd(7, min, max);
    EXPECT_EQ(odd.getEdges()[0], min);
    EXPECT_EQ(odd.getEdges()[7], max);
    for (unsigned int i = 1; i < 7; ++i)
        EXPECT_EQ(odd.getEdges()[i], static_cast<T>(i) * (T(1) / T(7)) * (max - min) + min);
}

TYPED_TEST(RnHistogramTest, binsHoldTheirLowerEdgeAndNotTheirUpper)
{
    using T = TypeParam;
    RnHistogram<T> histogram(4, T(0), T(1));
    EXPECT_EQ(histogram.getBin(T(0.25)), 1);
    EXPECT_EQ(histogram.getBin(std::nextafter(T(0.25), T(0))), 0);
    EXPECT_EQ(histogram.getBin(T(0)), 0);
    EXPECT_EQ(histogram.getBin(T(1)), 4);
    EXPECT_EQ(histogram.getBin(T(5)), 4);
    EXPECT_EQ(histogram.getBin(T(-0.1)), -1);
    EXPECT_EQ(histogram.getBin(this->nan), 4);
    EXPECT_EQ(histogram.getBin(this->infinity), 4);
    EXPECT_EQ(histogram.getBin(-this->infinity), -1);
    for (T x : {T(0.25), T(1), T(-0.1), this->nan})
        histogram.addSample(x, T(1));
    EXPECT_EQ(histogram.getBins(), (Vn::Vector<T>{T(0), T(1), T(0), T(0)}));
    EXPECT_EQ(histogram.getTotal(), T(1));
}

TYPED_TEST(RnHistogramTest, everyEdgeAndItsNeighboursAreFoundAsByTheSearch)
{
    using T = TypeParam;
    std::vector<std::vector<T>> all;
    all.push_back({T(0), T(1e-30), T(1e-20), T(1e-10), T(1), T(2), T(1e10), T(1e20)});
    all.push_back({T(-3), T(-2.5), T(-2.4999), T(-1), T(0), T(0.001), T(7), T(8), T(8.5)});
    all.push_back({T(0), T(0), T(1), T(1), T(2), T(3)});  // edges that meet
    all.push_back({T(0), T(4), T(1), T(5), T(2), T(6)});  // that don't ascend
    all.push_back({std::numeric_limits<T>::lowest(), T(0), T(1), T(2), T(3), std::numeric_limits<T>::max()});
    all.push_back({T(1), std::nextafter(T(1), T(2)), T(1.5), T(2), T(3)});
    all.push_back({-this->infinity, T(0), T(1), T(2), this->infinity});
    all.push_back({T(0), std::numeric_limits<T>::denorm_min(), 2 * std::numeric_limits<T>::denorm_min(),
                   3 * std::numeric_limits<T>::denorm_min(), 5 * std::numeric_limits<T>::denorm_min()});
    // The last four lie so close to 0 that each is as far from the first as the last is.
    all.push_back({T(-1), T(-0.5), T(1e-30), T(2e-30), T(3e-30), T(4e-30)});
    std::vector<T> squares, crowded;
    for (int i = 0; i <= 200; ++i) {
        squares.push_back(static_cast<T>(i) * static_cast<T>(i) / T(700));
        crowded.push_back(i < 190 ? T(1) + static_cast<T>(i) * std::numeric_limits<T>::epsilon()
                                  : static_cast<T>(i));
    }
    all.push_back(squares);
    all.push_back(crowded);
    for (std::vector<T> const& edges : all) {
        const RnHistogram<T> histogram(static_cast<unsigned int>(edges.size() - 1), edges.data());
        std::vector<T> points = {this->nan, this->infinity, -this->infinity, T(0), T(-0.0)};
        for (T edge : edges)
            for (T point : {edge, std::nextafter(edge, this->infinity), std::nextafter(edge, -this->infinity)})
                points.push_back(point);
        RnLecuyerUniformRng<T> uniform;
        for (int i = 0; i < 2000; ++i)
            points.push_back(edges.front() + uniform() * (edges.back() - edges.front()));
        for (T x : points)
            ASSERT_EQ(histogram.getBin(x), plainBin(histogram.getEdges(), x)) << x << " in " << edges.size();
    }
}

TYPED_TEST(RnHistogramTest, edgesThatAreNoNumbersAreHarmless)
{
    using T = TypeParam;
    for (std::size_t at = 0; at < 6; ++at) {
        std::vector<T> edges = {T(0), T(1), T(2), T(3), T(4), T(5)};
        edges[at] = this->nan;
        RnHistogram<T> histogram(5, edges.data());
        for (T x : {T(-1), T(0.5), T(2.5), T(9), this->nan}) {
            histogram.addSample(x, T(1));
            EXPECT_GE(histogram.getBin(x), -1);
            EXPECT_LE(histogram.getBin(x), 5);
        }
    }
    RnHistogram<T> strange(8, this->nan, this->nan);
    strange.addSample(T(1), T(1));
    RnUniformHistogram<T> uniform(8, this->nan, this->infinity);
    uniform.addSample(T(1), T(1));
    EXPECT_EQ(uniform.getTotal(), T(0));
}

TYPED_TEST(RnHistogramTest, uniformBinsAreFoundByDivision)
{
    using T = TypeParam;
    RnUniformHistogram<T> histogram(7, T(-1), T(2));
    RnLecuyerUniformRng<T> uniform;
    for (int i = 0; i < 5000; ++i) {
        const T x = uniform(T(-2), T(3));
        EXPECT_EQ(histogram.getBin(x), static_cast<int>(std::floor((x - T(-1)) / T(3) * T(7))));
    }
    EXPECT_EQ(histogram.getBin(T(2)), 7);
    EXPECT_EQ(histogram.getBin(T(-1)), 0);
    EXPECT_EQ(histogram.getBin(T(-1.0001)), -1);
    EXPECT_EQ(histogram.getBin(T(-4)), -7);  // whole already
    EXPECT_EQ(histogram.getBin(this->nan), 7);
    EXPECT_EQ(histogram.getBin(this->infinity), std::numeric_limits<int>::max());
    EXPECT_EQ(histogram.getBin(-this->infinity), std::numeric_limits<int>::min());
    EXPECT_EQ(histogram.getBin(T(1e30)), std::numeric_limits<int>::max());
    for (T x : {T(2), T(-1.0001), this->nan, this->infinity, -this->infinity, T(1e30), T(-1e30)})
        histogram.addSample(x, T(1));
    EXPECT_EQ(histogram.getTotal(), T(0));
}

TYPED_TEST(RnHistogramTest, weightsAreSummed)
{
    using T = TypeParam;
    RnHistogram<T> histogram(2, T(0), T(1));
    histogram.addSample(T(0.5), T(2.5));
    histogram.addSample(T(0.5), T(-1));
    EXPECT_EQ(histogram.getBinValue(1), T(1.5));
    EXPECT_EQ(histogram.getTotal(), T(1.5));
    histogram.addSample(T(0), this->nan);
    EXPECT_TRUE(std::isnan(histogram.getTotal()));
    EXPECT_EQ(histogram.getBinValue(1), T(1.5));
}

TYPED_TEST(RnHistogramTest, manySamplesAreAddedAsOneByOne)
{
    using T = TypeParam;
    const std::vector<T> edges = {T(-2), T(-1), T(-0.5), T(0), T(0.125), T(1), T(3)};
    for (unsigned int size : {0u, 1u, 255u, 256u, 257u, 5000u}) {
        RnLecuyerUniformRng<T> uniform, same;
        Vn::RnGaussianRng<T> gaussian(&uniform), plainGaussian(&same);
        RnHistogram<T> byEdges(6, edges.data());
        RnUniformHistogram<T> byWidth(13, T(-2), T(2));
        PlainHistogram<T> plainEdges(byEdges), plainWidth(byWidth);
        byEdges.addSample(T(0), T(0.5));  // a total that is no integer
        plainEdges.add(T(0), T(0.5));
        byEdges.addSamples(gaussian, size);
        for (unsigned int i = 0; i < size; ++i)
            plainEdges.add(plainGaussian(), T(1));
        byWidth.addSamples(gaussian, size);
        for (unsigned int i = 0; i < size; ++i)
            plainWidth.add(plainGaussian(), T(1));
        plainEdges.expectIs(byEdges);
        plainWidth.expectIs(byWidth);
        EXPECT_EQ(gaussian(), plainGaussian());
    }
}

TYPED_TEST(RnHistogramTest, pointsOnEdgesAreAddedInBulkAsOneByOne)
{
    using T = TypeParam;
    const T edges[] = {T(-2), T(-1), T(0.5), T(0.75), T(1), T(3)};
    RnHistogram<T> byEdges(5, edges), few(2, edges);
    RnUniformHistogram<T> byWidth(5, T(-2), T(3));
    for (RnHistogram<T>* histogram : {&byEdges, &few, static_cast<RnHistogram<T>*>(&byWidth)}) {
        PlainHistogram<T> plain(*histogram);
        for (T edge : edges) {
            for (T x : {std::nextafter(edge, T(-9)), edge, std::nextafter(edge, T(9))}) {
                ConstantSource<T> source(x);
                ASSERT_EQ(source.rng(), x);
                histogram->addSamples(source.rng, 3);
                for (int i = 0; i < 3; ++i)
                    plain.add(x, T(1));
                plain.expectIs(*histogram);
            }
        }
    }
}

TYPED_TEST(RnHistogramTest, crowdedBinsAreFilledInBulkAsOneByOne)
{
    using T = TypeParam;
    const std::vector<std::vector<T>> all = {
        {T(0), T(0.01), T(0.02), T(0.03), T(0.04), T(1)},  // four at the beginning
        {T(0), T(0.5), T(0.51), T(0.52), T(0.53), T(1)},
        {T(0), T(0.96), T(0.97), T(0.98), T(0.99), T(1)},
    };
    for (std::vector<T> const& edges : all) {
        SCOPED_TRACE(edges[1]);
        RnHistogram<T> histogram(5, edges.data());
        PlainHistogram<T> plain(histogram);
        RnLecuyerUniformRng<T> source, same;
        histogram.addSamples(source, 2000);
        for (int i = 0; i < 2000; ++i)
            plain.add(same(), T(1));
        plain.expectIs(histogram);
        for (T value : histogram.getBins())
            EXPECT_GT(value, T(5));
    }
}

TYPED_TEST(RnHistogramTest, totalsThatAreNoCountsGrowByOneEachTime)
{
    using T = TypeParam;
    const T large = T(4) / std::numeric_limits<T>::epsilon();
    for (T start : {T(0.1), T(2) / T(3), T(-0.1), T(-8), -large, -large / T(4) - T(2), large / T(4) - T(3), large,
                    this->nan, this->infinity, -this->infinity}) {
        RnUniformHistogram<T> histogram(2, T(0), T(1));
        PlainHistogram<T> plain(histogram);
        histogram.addSample(T(0.25), start);
        plain.add(T(0.25), start);
        ConstantSource<T> source(T(0.75));
        histogram.addSamples(source.rng, 500);
        for (int i = 0; i < 500; ++i)
            plain.add(T(0.75), T(1));
        EXPECT_TRUE(histogram.getTotal() == plain.total || (std::isnan(start) && std::isnan(histogram.getTotal())))
            << start;
        EXPECT_EQ(histogram.getBinValue(1), T(500));
    }
}

TEST(RnHistogramFloat, binAndTotalStopGrowingWhereFloatDoes)
{
    RnUniformHistogram<float> histogram(1, 0.0f, 1.0f);
    histogram.addSample(0.5f, 16777214.0f);
    Vn::RnVanDerCorputRng<float> source;
    histogram.addSamples(source, 100);
    EXPECT_EQ(histogram.getTotal(), 16777216.0f);
    EXPECT_EQ(histogram.getBinValue(0), 16777216.0f);
    histogram.clear();
    histogram.addSample(0.5f, -7.5f);
    histogram.addSamples(source, 100);
    EXPECT_EQ(histogram.getTotal(), 92.5f);
}

TYPED_TEST(RnHistogramTest, theTotalIsTheSumInTheOrderOfTheSamples)
{
    using T = TypeParam;
    constexpr T weights[] = {T(1), T(1), T(0.1), T(1), T(-1), T(1e7), T(1)};
    RnUniformHistogram<T> histogram(4, T(0), T(1)), copy(histogram), assigned(histogram);
    RnHistogram<T> byEdges(4, T(0), T(1));
    T total = T(0);
    auto const add = [&](T x, T weight, bool isIn) {
        histogram.addSample(x, weight);
        byEdges.addSample(x, weight);
        if (isIn)
            total += weight;
    };
    for (int i = 0; i < 20000; ++i) {
        // Long runs of ones first, then other weights between ever shorter ones; now and then a number in no bin.
        const T weight = i % (20000 - i) == 0 ? weights[static_cast<std::size_t>(i) % std::size(weights)] : T(1);
        add(T(0.25) * static_cast<T>(i % 4), weight, true);
        if (i % 100 == 0)
            add(i % 200 == 0 ? T(-1) : T(1), T(1), false);
        if (i % 1000 == 999) {
            RnUniformHistogram<T> const taken(histogram);
            copy = histogram;
            static_cast<RnHistogram<T>&>(assigned) = byEdges;
            ASSERT_EQ(histogram.getTotal(), total) << i;
            ASSERT_EQ(byEdges.getTotal(), total) << i;
            ASSERT_EQ(taken.getTotal(), total) << i;
            ASSERT_EQ(copy.getTotal(), total) << i;
            ASSERT_EQ(assigned.getTotal(), total) << i;
        }
    }
    ScriptedRng<T> source({T(0.5)});
    histogram.addSamples(source, 3);
    EXPECT_EQ(histogram.getTotal(), total + T(1) + T(1) + T(1));
    RnLecuyerUniformRng<T> inBulk;
    copy.addSamples(inBulk, 0);
    EXPECT_EQ(copy.getTotal(), total);
    histogram.clear();
    EXPECT_EQ(histogram.getTotal(), T(0));
    histogram.addSample(T(0), T(1));
    EXPECT_EQ(histogram.getTotal(), T(1));
}

TYPED_TEST(RnHistogramTest, othersSourcesAreDrawnOneByOne)
{
    using T = TypeParam;
    FailingRng<T> source;
    RnHistogram<T> histogram(2, T(0), T(1));
    EXPECT_THROW(histogram.addSamples(source, 10), int);
    EXPECT_EQ(histogram.getBins(), (Vn::Vector<T>{T(2), T(1)}));
    EXPECT_EQ(histogram.getTotal(), T(3));
}

TYPED_TEST(RnHistogramTest, othersSourcesBehindOursAreDrawnOneByOneToo)
{
    using T = TypeParam;
    RnHistogram<T> square(1, T(0), T(1));
    square.addSample(T(0.5), T(1));
    {
        FailingRng<T> source;
        Vn::RnMexicanHatRng<T> triangle(&source, T(0.5), T(1));
        RnHistogram<T> histogram(2, T(0), T(1));
        EXPECT_THROW(histogram.addSamples(triangle, 10), int);
        EXPECT_EQ(histogram.getBins(), (Vn::Vector<T>{T(2), T(1)}));
        EXPECT_EQ(histogram.getTotal(), T(3));
    }
    {
        FailingRng<T> source;
        Vn::RnHistogramRng<T> again(square, &source);
        Vn::RnMexicanHatRng<T> triangle(&again, T(0.5), T(1));
        RnUniformHistogram<T> histogram(2, T(0), T(1));
        EXPECT_THROW(histogram.addSamples(triangle, 10), int);
        EXPECT_EQ(histogram.getBins(), (Vn::Vector<T>{T(2), T(1)}));
    }
    {
        FailingRng<T> source(T(0.75), T(0.5));
        Vn::RnGaussianRng<T> gaussian(&source);
        RnHistogram<T> histogram(4, T(-2), T(2));
        EXPECT_THROW(histogram.addSamples(gaussian, 10), int);
        EXPECT_EQ(histogram.getBins(), (Vn::Vector<T>{T(0), T(0), T(1), T(1)}));  // one pair: 0 and 1.67
        EXPECT_EQ(source.draws, 3u);
    }
}

TYPED_TEST(RnHistogramTest, aDerivedClassFindsItsOwnBins)
{
    using T = TypeParam;
    class Mirrored : public RnUniformHistogram<T>
    {
    public:
        Mirrored() : RnUniformHistogram<T>(4, T(0), T(1)) {}
        int getBin(T x) const override { return 3 - RnUniformHistogram<T>::getBin(x); }
    };
    Mirrored mirrored;
    mirrored.addSample(T(0.1), T(1));
    EXPECT_EQ(mirrored.getBinValue(3), T(1));
    Vn::RnVanDerCorputRng<T> source;  // 0.5, 0.25, 0.75
    mirrored.addSamples(source, 3);
    EXPECT_EQ(mirrored.getBins(), (Vn::Vector<T>{T(1), T(1), T(1), T(1)}));
}

TYPED_TEST(RnHistogramTest, clearKeepsEdges)
{
    using T = TypeParam;
    RnHistogram<T> histogram(2, T(0), T(1));
    histogram.addSample(T(0.5), T(2));
    histogram.clear();
    EXPECT_EQ(histogram.getBins(), (Vn::Vector<T>{T(0), T(0)}));
    EXPECT_EQ(histogram.getTotal(), T(0));
    EXPECT_EQ(histogram.getEdges().size(), 3u);
    histogram.addSample(T(0.5), T(2));
    EXPECT_EQ(histogram.getBinValue(1), T(2));
}

TYPED_TEST(RnHistogramTest, tellsItsRangeAndBounds)
{
    using T = TypeParam;
    const T edges[] = {T(-1), T(0), T(4)};
    RnHistogram<T> histogram(2, edges);
    T lo, hi;
    histogram.getRange(lo, hi);
    EXPECT_TRUE(lo == T(-1) && hi == T(4));
    histogram.getBinBounds(1, lo, hi);
    EXPECT_TRUE(lo == T(0) && hi == T(4));
    for (unsigned int beyond : {2u, 3u, 4294967295u}) {
        histogram.getBinBounds(beyond, lo, hi);
        EXPECT_TRUE(std::isnan(lo) && std::isnan(hi));
        EXPECT_EQ(histogram.getBinValue(beyond), T(0));
    }
}

TYPED_TEST(RnHistogramTest, noBinsAreHarmless)
{
    using T = TypeParam;
    RnHistogram<T> histogram(0, T(2), T(3));
    RnUniformHistogram<T> uniform(0, T(2), T(3));
    RnLecuyerUniformRng<T> source;
    for (RnHistogram<T>* none : {&histogram, static_cast<RnHistogram<T>*>(&uniform)}) {
        none->addSample(T(2.5), T(1));
        none->addSamples(source, 300);
        EXPECT_EQ(none->getTotal(), T(0));
        EXPECT_EQ(dumpOf(*none), "");
        EXPECT_NE(sceneOf(*none).find("3 0 0, \n"), std::string::npos);
    }
}

TYPED_TEST(RnHistogramTest, copiesAreApart)
{
    using T = TypeParam;
    RnUniformHistogram<T> one(4, T(0), T(1));
    one.addSample(T(0.3), T(1));
    RnUniformHistogram<T> two(one);
    two.addSample(T(0.3), T(1));
    EXPECT_EQ(one.getTotal(), T(1));
    EXPECT_EQ(two.getBinValue(1), T(2));
    RnHistogram<T> edges(8, T(0), T(2)), other(2, T(0), T(1));
    other = edges;
    EXPECT_EQ(other.getBin(T(1)), 4);
    // Where to look for a bin goes along, to one that has looked elsewhere.
    const T uneven[] = {T(-9), T(0), T(0.125), T(0.25), T(0.5), T(9)};
    const RnHistogram<T> source(5, uneven);
    RnHistogram<T> target(8, T(0), T(2));
    target = source;
    for (T x : {T(-9.5), T(-9), T(-1), T(0), T(0.2), T(0.25), T(0.5), T(8), T(9)})
        EXPECT_EQ(target.getBin(x), plainBin(source.getEdges(), x)) << x;
    target = other;
    for (T x : {T(-1), T(0), T(0.3), T(1), T(1.9), T(2)})
        EXPECT_EQ(target.getBin(x), plainBin(other.getEdges(), x)) << x;
    one = two;
    EXPECT_EQ(one.getBin(T(0.5)), 2);
    EXPECT_EQ(one.getTotal(), T(2));
}

TYPED_TEST(RnHistogramTest, aUniformOneAddsWhereItFindsAfterAssignmentThroughTheBase)
{
    using T = TypeParam;
    const T uneven[] = {T(-4), T(0), T(0.5), T(12)};
    const struct
    {
        char const* what;
        RnHistogram<T> from;
        T x;
        int expected;
    } table[] = {
        {"a wider range", RnHistogram<T>(4, T(0), T(8)), T(3), 1},
        {"a narrower range", RnHistogram<T>(4, T(0), T(0.5)), T(0.3), 2},
        {"other edges, more bins", RnHistogram<T>(8, T(-4), T(4)), T(-1.5), 2},
        {"uneven edges, of which the range counts", RnHistogram<T>(3, uneven), T(3), 1},
        {"above the new range", RnHistogram<T>(4, T(0), T(0.5)), T(0.75), 6},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.what);
        RnUniformHistogram<T> histogram(4, T(0), T(1));
        static_cast<RnHistogram<T>&>(histogram) = row.from;
        EXPECT_EQ(histogram.getBin(row.x), row.expected);
        PlainHistogram<T> plain(histogram);
        plain.add(row.x, T(1));
        histogram.addSample(row.x, T(1));
        plain.expectIs(histogram);
        ConstantSource<T> source(row.x);
        const T drawn = source.rng();
        histogram.addSamples(source.rng, 300);
        for (int i = 0; i < 300; ++i)
            plain.add(drawn, T(1));
        plain.expectIs(histogram);
    }
}

TYPED_TEST(RnHistogramTest, findingManyBinsByWidthGivesMinusOneForWhatLiesInNone)
{
    using T = TypeParam;
    using Bins = Vn::RnBins<T>;
    const Vn::Vector<T> edges = {T(0), T(1), T(2), T(3)};
    const struct
    {
        char const* what;
        T x;
        int expected;
    } table[] = {
        {"the first edge", T(0), 0},
        {"minus zero", T(-0.0), 0},
        {"inside", T(1.5), 1},
        {"the last number below the last edge", std::nextafter(T(3), T(0)), 2},
        {"the last edge", T(3), -1},
        {"above it", T(3.5), -1},
        {"far above it", T(1e9), -1},
        {"beyond 32 bits", T(1e30), -1},
        {"just below the first edge", T(-0.001), -1},
        {"far below it", T(-1e30), -1},
        {"infinity", this->infinity, -1},
        {"minus infinity", -this->infinity, -1},
        {"not-a-number", this->nan, -1},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.what);
        // As many as processors take at a time, and some more.
        const std::vector<T> samples(19, row.x);
        std::vector<int> found(samples.size(), 99);
        Bins::findManyByWidth(19, samples.data(), edges, found.data());
        EXPECT_EQ(found, std::vector<int>(samples.size(), row.expected));
        std::vector<unsigned int> indices(samples.size(), 99);
        Bins::findManyByWidth(19, samples.data(), edges, indices.data());
        EXPECT_EQ(indices, std::vector<unsigned int>(samples.size(), static_cast<unsigned int>(row.expected)));
        const int one = Bins::findByWidth(edges, row.x);
        EXPECT_EQ(one >= 0 && one < 3 ? one : -1, row.expected);
    }
    const Vn::Vector<T> none = {T(3)};
    int found = 99;
    const T x = T(3);
    Bins::findManyByWidth(1, &x, none, &found);
    EXPECT_EQ(found, -1);
}

TEST(RnHistogram, moreBinsThanAFloatCountsAreFoundManyAtATimeAsOneByOne)
{
    constexpr std::size_t count = 16777217;  // as a float 16777216, so that the last edge falls into the last bin
    Vn::Vector<float> edges(count + 1);
    edges.back() = 1.0f;
    const float samples[] = {0.0f, 0.5f, 1.0f, std::nextafter(1.0f, 2.0f)};
    int found[4];
    Vn::RnBins<float>::findManyByWidth(4, samples, edges, found);
    EXPECT_EQ(found[2], 16777216);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(found[i], Vn::RnBins<float>::findByWidth(edges, samples[i]));
    EXPECT_EQ(found[3], -1);
}

TYPED_TEST(RnHistogramTest, dumpsAreTheReckonedTexts)
{
    using T = TypeParam;
    const T edges[] = {T(-1.5), T(-0.25), T(0.5), T(3)};
    RnHistogram<T> histogram(3, edges);
    histogram.addSample(T(-1), T(1));
    histogram.addSample(T(0), T(2.5));
    histogram.addSample(T(2), T(4));
    EXPECT_EQ(dumpOf(histogram), reckonedDump<T>("line dump"));
    EXPECT_EQ(sceneOf(histogram), reckonedDump<T>("line scene"));
    EXPECT_TRUE(flushesEachLine(histogram));
}

TYPED_TEST(RnHistogramTest, dumpsUseTheStreamsFormatAndLeaveIt)
{
    using T = TypeParam;
    RnHistogram<T> histogram(1, T(0), T(0.125));
    histogram.addSample(T(0.1), T(3));
    std::ostringstream stream;
    stream << std::fixed << std::setprecision(2);
    histogram.dump(stream);
    histogram.dumpInventor(stream);
    stream << 0.5;
    EXPECT_EQ(stream.str().substr(0, 15), "0.00 0.12 3.00\n");
    EXPECT_NE(stream.str().find("0.06 8.00 0,\n"), std::string::npos);
    EXPECT_EQ(stream.str().substr(stream.str().size() - 4), "0.50");
}

TYPED_TEST(RnHistogramTest, anEmptyOneHasNoDensities)
{
    using T = TypeParam;
    const std::string scene = sceneOf(RnHistogram<T>(2, T(0), T(1)));
    EXPECT_NE(scene.find("nan 0,\n"), std::string::npos);
}

// The lines of use and the examples of edges that the classes' comments show.

TEST(RnHistogram, isUsedAsItsCommentShows)
{
    RnLecuyerUniformRng<double> uniform;
    Vn::RnGaussianRng<double> gaussian(&uniform);
    Vn::RnHistogram<double> histogram(16, -2.0, 2.0);
    histogram.addSamples(gaussian, 100000);
    std::ostringstream stream;
    histogram.dump(stream);
    EXPECT_EQ(stream.str(), dumpOf(histogram));

    RnHistogram<double> four(4, 0.0, 1.0);
    double lo, hi;
    four.getBinBounds(1, lo, hi);
    EXPECT_TRUE(lo == 0.25 && hi == 0.5);
    four.addSample(0.25, 3.0);
    four.addSample(0.25, -1.0);
    EXPECT_EQ(four.getBinValue(1), 2.0);
}

TEST(RnUniformHistogram, isUsedAsItsCommentShows)
{
    Vn::RnUniformHistogram<double> histogram(16, -2.0, 2.0);
    histogram.addSample(0.5, 1.0);  // bin 10
    EXPECT_EQ(histogram.getBinValue(10), 1.0);
    const RnUniformHistogram<double> four(4, 0.0, 1.0);
    const struct
    {
        double x;
        int bin;
    } table[] = {{0.25, 1}, {1, 4}, {-0.1, -1}, {-0.3, -2}};
    for (auto const& row : table)
        EXPECT_EQ(four.getBin(row.x), row.bin) << row.x;
}
