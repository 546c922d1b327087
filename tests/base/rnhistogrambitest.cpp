#include "rndumps.h"
#include "rnscripted.h"

#include <base/rnhaltonbirng.h>
#include <base/rnhistogrambi.h>
#include <base/rnlecuyeruniformrng.h>
#include <base/rnseparablemultirng.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <sstream>
#include <type_traits>
#include <vector>

using Vn::RnHistogramBi;
using Vn::RnUniformHistogramBi;
using VnTest::dumpOf;
using VnTest::flushesEachLine;
using VnTest::reckonedDump;
using VnTest::sceneOf;
using VnTest::ScriptedBiRng;

namespace
{
template <class T>
class RnHistogramBiTest : public testing::Test
{
protected:
    static constexpr T nan = std::numeric_limits<T>::quiet_NaN();
    static constexpr T infinity = std::numeric_limits<T>::infinity();
};

using Types = testing::Types<float, double>;

template <class T>
std::pair<unsigned int, unsigned int> binOf(RnHistogramBi<T> const& histogram, T x, T y)
{
    unsigned int ix, iy;
    histogram.getBin(x, y, ix, iy);
    return {ix, iy};
}

using Bin = std::pair<unsigned int, unsigned int>;
constexpr unsigned int below = 4294967295u;
}  // namespace

TYPED_TEST_SUITE(RnHistogramBiTest, Types);

TYPED_TEST(RnHistogramBiTest, binsAreFoundInEachCoordinate)
{
    using T = TypeParam;
    const T xEdges[] = {T(0), T(1), T(4)}, yEdges[] = {T(-1), T(0), T(0.5), T(2)};
    RnHistogramBi<T> histogram(2, 3, xEdges, yEdges);
    EXPECT_EQ(binOf(histogram, T(1), T(0)), Bin(1, 1));
    EXPECT_EQ(binOf(histogram, T(0), T(-1)), Bin(0, 0));
    EXPECT_EQ(binOf(histogram, T(4), T(2)), Bin(2, 3));
    EXPECT_EQ(binOf(histogram, T(-0.1), T(-2)), Bin(below, below));
    EXPECT_EQ(binOf(histogram, this->nan, this->infinity), Bin(2, 3));
    histogram.addSample(T(3), T(1), T(2.5));
    EXPECT_EQ(histogram.getBins()[2 * 2 + 1], T(2.5));
    EXPECT_EQ(histogram.getBinValue(1, 2), T(2.5));
    for (auto const& [x, y] : std::vector<std::pair<T, T>>{
             {T(-1), T(0)}, {T(4), T(0)}, {T(1), T(-2)}, {T(1), T(2)}, {this->nan, T(0)}, {T(1), this->nan}})
        histogram.addSample(x, y, T(1));
    EXPECT_EQ(histogram.getTotal(), T(2.5));
    static_assert(std::is_same_v<decltype(histogram.getNbBinsX()), T>);
    static_assert(std::is_same_v<decltype(histogram.getNbBinsY()), T>);
    EXPECT_EQ(histogram.getNbBinsX(), T(2));
    EXPECT_EQ(histogram.getNbBinsY(), T(3));
}

TYPED_TEST(RnHistogramBiTest, uniformBinsAreFoundByDivision)
{
    using T = TypeParam;
    RnUniformHistogramBi<T> histogram(5, 3, T(-1), T(2), T(0), T(7));
    Vn::RnLecuyerUniformRng<T> uniform;
    for (int i = 0; i < 3000; ++i) {
        const T x = uniform(T(-2), T(3)), y = uniform(T(-1), T(9));
        const Bin expected(static_cast<unsigned int>(static_cast<int>(std::floor((x - T(-1)) / T(3) * T(5)))),
                           static_cast<unsigned int>(static_cast<int>(std::floor((y - T(0)) / T(7) * T(3)))));
        EXPECT_EQ(binOf<T>(histogram, x, y), expected);
    }
    EXPECT_EQ(binOf<T>(histogram, T(-1.5), T(7)), Bin(below, 3));
    histogram.addSample(this->nan, T(1), T(1));
    histogram.addSample(T(0), this->infinity, T(1));
    histogram.addSample(T(-1.5), T(1), T(1));
    EXPECT_EQ(histogram.getTotal(), T(0));
    histogram.addSample(T(0), T(1), T(1));
    EXPECT_EQ(histogram.getBinValue(1, 0), T(1));
}

TYPED_TEST(RnHistogramBiTest, manySamplesAreAddedAsOneByOne)
{
    using T = TypeParam;
    std::vector<T> edges;
    for (int i = 0; i <= 20; ++i)
        edges.push_back(static_cast<T>(i * i) / T(380));
    for (unsigned int size : {0u, 1u, 256u, 257u, 5000u}) {
        RnHistogramBi<T> byEdges(20, 20, edges.data(), edges.data());
        RnUniformHistogramBi<T> byWidth(9, 11, T(0.25), T(0.9), T(0.1), T(1));
        for (RnHistogramBi<T>* histogram : {&byEdges, static_cast<RnHistogramBi<T>*>(&byWidth)}) {
            Vn::RnHaltonBiRng<T> many, single;
            histogram->addSamples(many, size);
            std::vector<T> bins(histogram->getBins().size());
            T total = T(0);
            for (unsigned int i = 0; i < size; ++i) {
                T x, y;
                single.getSample(x, y);
                auto const [ix, iy] = binOf(*histogram, x, y);
                if (static_cast<int>(ix) >= 0 && static_cast<T>(ix) < histogram->getNbBinsX() &&
                    static_cast<int>(iy) >= 0 && static_cast<T>(iy) < histogram->getNbBinsY()) {
                    bins[iy * static_cast<unsigned int>(histogram->getNbBinsX()) + ix] += T(1);
                    total += T(1);
                }
            }
            EXPECT_EQ(histogram->getTotal(), total);
            EXPECT_TRUE(
                std::equal(bins.begin(), bins.end(), histogram->getBins().begin(), histogram->getBins().end()));
        }
    }
}

TYPED_TEST(RnHistogramBiTest, theTotalIsTheSumInTheOrderOfThePoints)
{
    using T = TypeParam;
    RnUniformHistogramBi<T> histogram(4, 4, T(0), T(1), T(0), T(1)), copy(histogram);
    RnHistogramBi<T> byEdges(4, 4, T(0), T(1), T(0), T(1));
    T total = T(0);
    for (int i = 0; i < 20000; ++i) {
        const T weight = i % (20000 - i) == 0 ? T(0.1) : T(1), place = T(0.25) * static_cast<T>(i % 4);
        histogram.addSample(place, T(0.75) - place, weight);
        byEdges.addSample(place, T(0.75) - place, weight);
        total += weight;
        if (i % 100 == 0) {
            histogram.addSample(place, T(1), T(1));
            histogram.addSample(T(-0.01), place, T(1));
        }
        if (i % 1000 == 999) {
            RnUniformHistogramBi<T> const taken(histogram);
            copy = histogram;
            ASSERT_EQ(histogram.getTotal(), total) << i;
            ASSERT_EQ(byEdges.getTotal(), total) << i;
            ASSERT_EQ(taken.getTotal(), total) << i;
            ASSERT_EQ(copy.getTotal(), total) << i;
        }
    }
    for (unsigned int i = 0; i < 4; ++i)
        EXPECT_EQ(histogram.getBinValue(i, 3 - i), byEdges.getBinValue(i, 3 - i));
    histogram.clear();
    histogram.addSample(T(0), T(0), T(1));
    EXPECT_EQ(histogram.getTotal(), T(1));
    // A weight that is too large for the ones before it to show takes them along when it is taken back.
    constexpr T large = T(8) / std::numeric_limits<T>::epsilon();
    for (T weight : {T(1), large, -large})
        histogram.addSample(T(0), T(0), weight);
    EXPECT_EQ(histogram.getTotal(), T(0));
}

TYPED_TEST(RnHistogramBiTest, othersSourcesAreDrawnPointByPoint)
{
    using T = TypeParam;
    ScriptedBiRng<T> source({{T(0.1), T(0.1)}, {T(0.9), T(0.1)}}, {{T(0.9), T(0.9)}});
    RnHistogramBi<T> histogram(2, 2, T(0), T(1), T(0), T(1));
    histogram.addSamples(source, 4);
    EXPECT_EQ(source.draws, 4u);
    EXPECT_EQ(histogram.getBins(), (Vn::Vector<T>{T(2), T(2), T(0), T(0)}));
}

TYPED_TEST(RnHistogramBiTest, aDerivedClassFindsItsOwnBins)
{
    using T = TypeParam;
    class Turned : public RnHistogramBi<T>
    {
    public:
        Turned() : RnHistogramBi<T>(2, 2, T(0), T(1), T(0), T(1)) {}
        void getBin(T x, T y, unsigned int& ix, unsigned int& iy) const override
        {
            RnHistogramBi<T>::getBin(y, x, ix, iy);
        }
    };
    Turned turned;
    Vn::RnHaltonBiRng<T> source;
    turned.addSamples(source, 1);  // (1/2, 1/3)
    EXPECT_EQ(turned.getBins(), (Vn::Vector<T>{T(0), T(0), T(1), T(0)}));
}

TYPED_TEST(RnHistogramBiTest, tellsItsRangeAndBounds)
{
    using T = TypeParam;
    RnHistogramBi<T> histogram(2, 4, T(0), T(1), T(-2), T(2));
    T a, b, c, d;
    histogram.getRange(a, b, c, d);
    EXPECT_TRUE(a == T(0) && b == T(1) && c == T(-2) && d == T(2));
    histogram.getBinBounds(1, 3, a, b, c, d);
    EXPECT_TRUE(a == T(0.5) && b == T(1) && c == T(1) && d == T(2));
    histogram.getBinBounds(2, 3, a, b, c, d);
    EXPECT_TRUE(std::isnan(a) && std::isnan(b) && c == T(1));
    histogram.getBinBounds(0, 4, a, b, c, d);
    EXPECT_TRUE(a == T(0) && std::isnan(c) && std::isnan(d));
    histogram.addSample(T(0), T(-1), T(3));
    EXPECT_EQ(histogram.getBinValue(2, 0), T(3));  // element 0 * 2 + 2 is the next row's first
    EXPECT_EQ(histogram.getBinValue(0, 4), T(0));
    EXPECT_EQ(histogram.getBinValue(4294967295u, 4294967295u), T(0));
    EXPECT_EQ(histogram.getXEdges().size(), 3u);
    EXPECT_EQ(histogram.getYEdges()[1], T(-1));
    histogram.clear();
    EXPECT_EQ(histogram.getTotal(), T(0));
    EXPECT_EQ(histogram.getBinValue(2, 0), T(0));
    EXPECT_EQ(histogram.getXEdges().size(), 3u);
}

TYPED_TEST(RnHistogramBiTest, noBinsAreHarmless)
{
    using T = TypeParam;
    Vn::RnHaltonBiRng<T> source;
    for (auto const& [nx, ny] : {Bin(0, 0), Bin(0, 3), Bin(3, 0)}) {
        RnHistogramBi<T> byEdges(nx, ny, T(0), T(1), T(0), T(1));
        RnUniformHistogramBi<T> byWidth(nx, ny, T(0), T(1), T(0), T(1));
        for (RnHistogramBi<T>* histogram : {&byEdges, static_cast<RnHistogramBi<T>*>(&byWidth)}) {
            histogram->addSample(T(0.5), T(0.5), T(1));
            histogram->addSamples(source, 300);
            EXPECT_EQ(histogram->getTotal(), T(0));
            EXPECT_EQ(dumpOf(*histogram), "");
            EXPECT_EQ(histogram->getBinValue(0, 0), T(0));
        }
    }
}

TYPED_TEST(RnHistogramBiTest, aUniformOneAddsWhereItFindsAfterAssignmentThroughTheBase)
{
    using T = TypeParam;
    RnUniformHistogramBi<T> histogram(4, 4, T(0), T(1), T(0), T(1));
    static_cast<RnHistogramBi<T>&>(histogram) = RnHistogramBi<T>(4, 2, T(0), T(8), T(-1), T(0));
    EXPECT_EQ(binOf<T>(histogram, T(3), T(-0.25)), Bin(1, 1));
    EXPECT_EQ(binOf<T>(histogram, T(1), T(-0.75)), Bin(0, 0));
    EXPECT_EQ(binOf<T>(histogram, T(9), T(0.25)), Bin(4, 2));
    histogram.addSample(T(3), T(-0.25), T(1));
    histogram.addSample(T(1), T(-0.75), T(2));
    histogram.addSample(T(9), T(-0.25), T(4));
    EXPECT_EQ(histogram.getBins(), (Vn::Vector<T>{T(2), T(0), T(0), T(0), T(0), T(1), T(0), T(0)}));
    EXPECT_EQ(histogram.getTotal(), T(3));
    // In the range before and in the range after, but in another bin.
    RnUniformHistogramBi<T> widened(2, 2, T(0), T(1), T(0), T(1));
    static_cast<RnHistogramBi<T>&>(widened) = RnHistogramBi<T>(2, 2, T(0), T(4), T(0), T(8));
    widened.addSample(T(0.75), T(0.75), T(1));
    EXPECT_EQ(widened.getBins(), (Vn::Vector<T>{T(1), T(0), T(0), T(0)}));
}

TYPED_TEST(RnHistogramBiTest, dumpsAreTheReckonedTexts)
{
    using T = TypeParam;
    const T xEdges[] = {T(0.5), T(1), T(2.75)}, yEdges[] = {T(-1), T(0), T(0.125), T(7)};
    RnHistogramBi<T> histogram(2, 3, xEdges, yEdges);
    const T weights[] = {T(1), T(2), T(0), T(4), T(5.5), T(3)};
    for (int i = 0; i < 6; ++i)
        histogram.addSample(xEdges[i % 2], yEdges[i / 2], weights[i]);
    EXPECT_EQ(dumpOf(histogram), reckonedDump<T>("area dump"));
    EXPECT_EQ(sceneOf(histogram), reckonedDump<T>("area scene"));
    EXPECT_TRUE(flushesEachLine(histogram));
}

TYPED_TEST(RnHistogramBiTest, framesLastVerticesTakeTheMiddleOfXForBoth)
{
    using T = TypeParam;
    const std::string scene = sceneOf(RnHistogramBi<T>(1, 1, T(0), T(1), T(0), T(2)));
    EXPECT_NE(scene.find("0 2 0, \n0.5 0.5 0, \n0.5 0.5 1, \n] }\n"), std::string::npos);
}

TYPED_TEST(RnHistogramBiTest, copiesAreApart)
{
    using T = TypeParam;
    RnUniformHistogramBi<T> one(4, 4, T(0), T(1), T(0), T(1)), two(one), three(1, 1, T(0), T(1), T(0), T(1));
    two.addSample(T(0.3), T(0.3), T(1));
    EXPECT_EQ(one.getTotal(), T(0));
    three = two;
    EXPECT_EQ(three.getBinValue(1, 1), T(1));
    RnHistogramBi<T> plain(4, 4, T(0), T(1), T(0), T(1)), other(plain);
    other.addSample(T(0.3), T(0.3), T(1));
    plain = other;
    EXPECT_EQ(plain.getTotal(), T(1));
    // Where to look for a bin goes along, to one that has looked elsewhere.
    const T xEdges[] = {T(-9), T(0), T(0.125), T(0.25), T(0.5), T(9)}, yEdges[] = {T(0), T(7), T(7.5), T(8), T(90)};
    plain = RnHistogramBi<T>(5, 4, xEdges, yEdges);
    for (unsigned int ix = 0; ix < 5; ++ix) {
        for (unsigned int iy = 0; iy < 4; ++iy) {
            EXPECT_EQ(binOf(plain, xEdges[ix], yEdges[iy]), Bin(ix, iy));
            EXPECT_EQ(binOf(plain, std::nextafter(xEdges[ix + 1], T(-99)), std::nextafter(yEdges[iy + 1], T(-99))),
                      Bin(ix, iy));
        }
    }
}

// The lines of use and the examples of edges that the classes' comments show.

TEST(RnHistogramBi, isUsedAsItsCommentShows)
{
    Vn::RnHaltonBiRng<float> points;
    Vn::RnHistogramBi<float> histogram(16, 16, 0.0f, 1.0f, 0.0f, 1.0f);
    histogram.addSamples(points, 100000);
    EXPECT_EQ(histogram.getTotal(), 100000.0f);
    std::ostringstream stream;
    histogram.dumpInventor(stream);
    EXPECT_EQ(stream.str(), sceneOf(histogram));

    RnHistogramBi<double> four(2, 2, 0.0, 1.0, 0.0, 1.0);
    EXPECT_EQ(binOf(four, 0.5, 0.0), Bin(1, 0));
    EXPECT_EQ(binOf(four, -0.1, 7.0), Bin(below, 2));
    four.addSample(0.5, 0.2, 1.0);
    four.addSample(0.2, 0.5, 2.0);
    four.addSample(0.5, 1.0, 4.0);
    four.addSample(-0.1, 0.5, 4.0);
    EXPECT_EQ(four.getBins(), (Vn::Vector<double>{0, 1, 2, 0}));
    double xLo, xHi, yLo, yHi;
    four.getBinBounds(1, 0, xLo, xHi, yLo, yHi);
    EXPECT_TRUE(xLo == 0.5 && xHi == 1.0 && yLo == 0.0 && yHi == 0.5);
    four.getBinBounds(2, 0, xLo, xHi, yLo, yHi);
    EXPECT_TRUE(std::isnan(xLo) && std::isnan(xHi) && yLo == 0.0 && yHi == 0.5);
}

TEST(RnUniformHistogramBi, isUsedAsItsCommentShows)
{
    Vn::RnHaltonBiRng<float> points;
    Vn::RnUniformHistogramBi<float> histogram(16, 16, 0.0f, 1.0f, 0.0f, 1.0f);
    histogram.addSamples(points, 100000);
    EXPECT_EQ(histogram.getTotal(), 100000.0f);
    const RnUniformHistogramBi<double> four(4, 4, 0.0, 1.0, 0.0, 1.0);
    EXPECT_EQ(binOf<double>(four, 0.25, 1.0), Bin(1, 4));
    EXPECT_EQ(binOf<double>(four, -0.1, 0.0), Bin(below, 0));
}
