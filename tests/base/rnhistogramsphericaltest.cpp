#include "rndumps.h"
#include "rnscripted.h"

#include <base/rncosinehemisphericalrng.h>
#include <base/rnhaltonbirng.h>
#include <base/rnhistogramspherical.h>
#include <base/rnuniformsphericalrng.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <sstream>
#include <vector>

using Vn::RnHistogramHemispherical;
using Vn::RnHistogramSpherical;
using VnTest::dumpOf;
using VnTest::flushesEachLine;
using VnTest::reckonedDump;
using VnTest::sceneOf;

namespace
{
template <class T>
class RnHistogramSphericalTest : public testing::Test
{
protected:
    static constexpr T nan = std::numeric_limits<T>::quiet_NaN();
    static constexpr T twoPi = T(6.283185307179586);
};

using Types = testing::Types<float, double>;
using Bin = std::pair<unsigned int, unsigned int>;
constexpr unsigned int below = 4294967295u;

template <class Histogram, class T>
Bin byCosine(Histogram const& histogram, T cosine, T phi)
{
    Bin bin;
    histogram.getBinCosine(cosine, phi, bin.first, bin.second);
    return bin;
}

template <class Histogram, class T>
Bin byAngles(Histogram const& histogram, T theta, T phi)
{
    Bin bin;
    histogram.getBinAngles(theta, phi, bin.first, bin.second);
    return bin;
}

/// Element `index` of the bins, which only the dump shows as they are filled.
template <class Histogram>
std::string lastField(Histogram const& histogram, int index)
{
    std::istringstream lines(dumpOf(histogram));
    std::string line;
    for (int i = 0; i <= index; ++i)
        std::getline(lines, line);
    return line.substr(line.rfind(' ') + 1);
}
}  // namespace

TYPED_TEST_SUITE(RnHistogramSphericalTest, Types);

TYPED_TEST(RnHistogramSphericalTest, binsAreEvenInCosineAndAzimuth)
{
    using T = TypeParam;
    const RnHistogramHemispherical<T> half(4, 8);
    const RnHistogramSpherical<T> whole(4, 8);
    EXPECT_EQ(byCosine(half, T(0), T(0)), Bin(0, 0));
    EXPECT_EQ(byCosine(half, T(0.25), T(0.8)), Bin(1, 1));
    EXPECT_EQ(byCosine(half, T(0.99), T(6.2)), Bin(3, 7));
    EXPECT_EQ(byCosine(whole, T(-1), T(0)), Bin(0, 0));
    EXPECT_EQ(byCosine(whole, T(-0.5), T(0)), Bin(1, 0));
    EXPECT_EQ(byCosine(whole, T(0.49), T(3.2)), Bin(2, 4));
    EXPECT_EQ(byAngles(half, T(1), T(0)), Bin(2, 0));  // cos 1 = 0.54
    EXPECT_EQ(byAngles(whole, T(3), T(0)), Bin(0, 0));
}

TYPED_TEST(RnHistogramSphericalTest, placesAreProductsWithTheScales)
{
    using T = TypeParam;
    // Rounding shows at the edges: where a quotient would be whole, the product may lie just below.
    const T perTurn = sizeof(T) == 4 ? T(0.15915494f) : T(0.15915494309189535);
    for (unsigned int count = 1; count <= 100; ++count) {
        const RnHistogramHemispherical<T> half(count, count);
        const RnHistogramSpherical<T> whole(count, count);
        const T n = static_cast<T>(count);
        for (unsigned int i = 0; i < count; ++i) {
            const T phi = static_cast<T>(i) / n * this->twoPi, cosine = static_cast<T>(i) / n;
            const unsigned int ip = static_cast<unsigned int>(phi * (n * perTurn));
            ASSERT_EQ(byCosine(half, cosine, phi),
                      Bin(static_cast<unsigned int>(cosine * n), std::min(ip, count - 1)));
            ASSERT_EQ(byCosine(whole, cosine, phi),
                      Bin(static_cast<unsigned int>((cosine + T(1)) * (n * T(0.5))), std::min(ip, count - 1)));
            ASSERT_EQ(byAngles(whole, T(1.5), phi).second, ip);
        }
    }
}

TYPED_TEST(RnHistogramSphericalTest, dumpsTakeTheReciprocalOfACountTimesTheIndex)
{
    using T = TypeParam;
    constexpr unsigned int nc = 49, np = 41;  // where that is not always the quotient
    const RnHistogramHemispherical<T> half(nc, np);
    const RnHistogramSpherical<T> whole(nc, np);
    std::ostringstream halfDump, wholeDump, halfExpected, wholeExpected;
    for (std::ostringstream* stream : {&halfDump, &wholeDump, &halfExpected, &wholeExpected})
        stream->precision(std::numeric_limits<T>::max_digits10);
    half.dump(halfDump);
    whole.dump(wholeDump);
    const T perCosine = T(1) / static_cast<T>(nc), perAzimuth = T(1) / static_cast<T>(np);
    auto const write = [](std::ostream& stream, T a, T b, T c, T d) {
        stream << a << " " << b << " " << c << " " << d << " 0\n";
    };
    for (unsigned int ic = 0; ic < nc; ++ic) {
        for (unsigned int ip = 0; ip < np; ++ip) {
            const T lower = perCosine * static_cast<T>(ic), upper = perCosine * static_cast<T>(ic + 1);
            const T from = perAzimuth * static_cast<T>(ip) * this->twoPi;
            const T to = perAzimuth * static_cast<T>(ip + 1) * this->twoPi;
            write(halfExpected, lower, upper, from, to);
            write(wholeExpected, T(2) * lower - T(1), T(2) * upper - T(1), from, to);
        }
    }
    EXPECT_EQ(halfDump.str(), halfExpected.str());
    EXPECT_EQ(wholeDump.str(), wholeExpected.str());
}

TYPED_TEST(RnHistogramSphericalTest, onlyTheCosineFormIsLoweredToTheLastBin)
{
    using T = TypeParam;
    const RnHistogramHemispherical<T> half(4, 8);
    const RnHistogramSpherical<T> whole(4, 8);
    EXPECT_EQ(byCosine(whole, T(1), T(0)), Bin(3, 0));
    EXPECT_EQ(byAngles(whole, T(0), T(0)), Bin(4, 0));
    EXPECT_EQ(byCosine(half, T(1), T(7)), Bin(3, 7));
    EXPECT_EQ(byAngles(half, T(0), T(7)), Bin(4, 8));
    EXPECT_EQ(byCosine(half, T(9), T(99)), Bin(3, 7));
}

TYPED_TEST(RnHistogramSphericalTest, negativeIndicesStay)
{
    using T = TypeParam;
    const RnHistogramHemispherical<T> half(4, 8);
    EXPECT_EQ(byCosine(half, T(-0.1), T(0)), Bin(below, 0));
    EXPECT_EQ(byCosine(half, T(0), T(-0.1)), Bin(0, below));
    EXPECT_EQ(byAngles(half, T(3), T(-1)), Bin(below - 3, below - 1));
    EXPECT_EQ(byCosine(half, this->nan, this->nan), Bin(2147483648u, 2147483648u));
    EXPECT_EQ(byAngles(half, this->nan, std::numeric_limits<T>::infinity()), Bin(2147483648u, 2147483647u));
}

TYPED_TEST(RnHistogramSphericalTest, samplesOutsideTheArrayAreDropped)
{
    using T = TypeParam;
    RnHistogramHemispherical<T> histogram(4, 8);
    for (T cosine : {T(-0.1), T(-1), T(-1e30), this->nan, -std::numeric_limits<T>::infinity()})
        histogram.addSampleCosine(cosine, T(0));
    histogram.addSampleCosine(T(0), T(-0.1));
    histogram.addSampleCosine(T(0.5), this->nan);
    histogram.addSampleCosine(T(0.5), T(-1e30));
    histogram.addSampleAngles(T(3), T(0));
    histogram.addSampleCosine(T(0.5), T(-0.1));
    EXPECT_EQ(histogram.getTotal(), T(0));
    histogram.addSampleCosine(T(9), T(99));  // what is above is lowered
    EXPECT_EQ(histogram.getTotal(), T(1));
    EXPECT_EQ(lastField(histogram, 4 * 8 - 1), "1");
    RnHistogramSpherical<T> sphere(4, 8);
    sphere.addSampleCosine(T(-1.5), T(0));
    EXPECT_EQ(sphere.getTotal(), T(0));
}

TYPED_TEST(RnHistogramSphericalTest, samplesAreWeighted)
{
    using T = TypeParam;
    RnHistogramSpherical<T> histogram(4, 4);
    histogram.addSampleCosine(T(0.1), T(2));
    histogram.addSampleCosine(T(0.1), T(2), T(2.5));
    histogram.addSampleAngles(T(1.5), T(2));
    histogram.addSampleAngles(T(1.5), T(2), T(0.5));
    EXPECT_EQ(histogram.getBinValue(2, 1), T(5));
    EXPECT_EQ(histogram.getTotal(), T(5));
    histogram.clear();
    EXPECT_EQ(histogram.getBinValue(2, 1), T(0));
    EXPECT_EQ(histogram.getTotal(), T(0));
}

TYPED_TEST(RnHistogramSphericalTest, readingHasAnotherStrideThanFilling)
{
    using T = TypeParam;
    RnHistogramHemispherical<T> histogram(2, 8);
    histogram.addSampleCosine(T(0.75), T(0));  // element 1 * 8 + 0
    EXPECT_EQ(lastField(histogram, 8), "1");
    EXPECT_EQ(histogram.getBinValue(1, 0), T(0));
    EXPECT_EQ(histogram.getBinValue(4, 0), T(1));
    EXPECT_EQ(histogram.getBinValue(1, 6), T(1));
    EXPECT_EQ(histogram.getBinValue(8, 0), T(0));  // beyond the array
    EXPECT_EQ(histogram.getBinValue(4294967295u, 4294967295u), T(0));
    RnHistogramHemispherical<T> wide(8, 2);
    wide.addSampleCosine(T(0.99), T(4));  // element 15
    EXPECT_EQ(wide.getBinValue(1, 7), T(1));
    EXPECT_EQ(wide.getBinValue(7, 1), T(0));
}

TYPED_TEST(RnHistogramSphericalTest, manySamplesGoUnderTheCosineOfTheirCosine)
{
    using T = TypeParam;
    Vn::RnHaltonBiRng<T> points, same;
    Vn::RnUniformSphericalRng<T> directions(&points), plain(&same);
    RnHistogramSpherical<T> histogram(16, 16), expected(16, 16);
    histogram.addSamples(directions, 1000);
    for (int i = 0; i < 1000; ++i) {
        T cosine, phi;
        plain.getSampleCosine(cosine, phi);
        expected.addSampleCosine(static_cast<T>(std::cos(static_cast<double>(cosine))), phi);
    }
    EXPECT_EQ(dumpOf(histogram), dumpOf(expected));
    EXPECT_EQ(histogram.getTotal(), T(1000));
    for (unsigned int ip = 0; ip < 16; ++ip)
        EXPECT_EQ(histogram.getBinValue(11, ip), T(0));  // no cosine of -1 to 1 is below cos 1 = 0.54
}

TYPED_TEST(RnHistogramSphericalTest, aDerivedClassFindsItsOwnBins)
{
    using T = TypeParam;
    class One : public RnHistogramHemispherical<T>
    {
    public:
        One() : RnHistogramHemispherical<T>(2, 2) {}
        void getBinCosine(T, T, unsigned int& ic, unsigned int& ip) const override { ic = ip = 1; }
    };
    One one;
    one.addSampleCosine(T(0), T(0));
    one.addSampleAngles(T(0), T(0));
    EXPECT_EQ(one.getBinValue(1, 1), T(2));
}

TYPED_TEST(RnHistogramSphericalTest, noBinsAreHarmless)
{
    using T = TypeParam;
    for (auto const& [nc, np] : {Bin(0, 0), Bin(0, 3), Bin(3, 0)}) {
        RnHistogramHemispherical<T> half(nc, np);
        RnHistogramSpherical<T> whole(nc, np);
        half.addSampleCosine(T(0.5), T(1));
        whole.addSampleAngles(T(0.5), T(1));
        EXPECT_EQ(half.getTotal() + whole.getTotal(), T(0));
        EXPECT_EQ(dumpOf(half) + dumpOf(whole), "");
        EXPECT_EQ(half.getBinValue(0, 0), T(0));
        EXPECT_EQ(byCosine(half, T(0.5), T(1)).first, nc == 0 ? below : 1u);
    }
}

TYPED_TEST(RnHistogramSphericalTest, dumpsAreTheReckonedTexts)
{
    using T = TypeParam;
    RnHistogramHemispherical<T> half(3, 4);
    RnHistogramSpherical<T> whole(3, 4);
    for (int i = 0; i < 12; ++i) {
        const T cosine = (static_cast<T>(i / 4) + T(0.5)) / T(3);
        const T phi = (static_cast<T>(i % 4) + T(0.5)) / T(4) * this->twoPi;
        half.addSampleCosine(cosine, phi, static_cast<T>(3 * i % 7 + 1));
        whole.addSampleCosine(T(2) * cosine - T(1), phi, static_cast<T>(3 * i % 7 + 1));
    }
    EXPECT_EQ(dumpOf(half), reckonedDump<T>("hemisphere dump"));
    EXPECT_EQ(sceneOf(half), reckonedDump<T>("hemisphere scene"));
    EXPECT_EQ(dumpOf(whole), reckonedDump<T>("sphere dump"));
    EXPECT_EQ(sceneOf(whole), reckonedDump<T>("sphere scene"));
    EXPECT_TRUE(flushesEachLine(half));
    EXPECT_TRUE(flushesEachLine(whole));
}

TYPED_TEST(RnHistogramSphericalTest, copiesAreApart)
{
    using T = TypeParam;
    RnHistogramHemispherical<T> one(2, 2), two(one);
    two.addSampleCosine(T(0.6), T(4));
    EXPECT_EQ(one.getTotal(), T(0));
    one = two;
    EXPECT_EQ(one.getBinValue(1, 1), T(1));
    RnHistogramSpherical<T> sphere(2, 2), other(1, 1);
    sphere.addSampleCosine(T(0.6), T(4));
    other = sphere;
    EXPECT_EQ(RnHistogramSpherical<T>(other).getBinValue(1, 1), T(1));
}

// The lines of use and the examples of edges that the classes' comments show.

TEST(RnHistogramHemispherical, isUsedAsItsCommentShows)
{
    const float cosTheta = 0.3f, phi = 2.0f;
    Vn::RnHistogramHemispherical<float> histogram(8, 16);
    histogram.addSampleCosine(cosTheta, phi);
    std::ostringstream file;
    histogram.dumpInventor(file);
    EXPECT_EQ(histogram.getTotal(), 1.0f);
    const RnHistogramHemispherical<double> four(4, 8);
    unsigned int ic, ip;
    four.getBinAngles(0.0, 0.0, ic, ip);
    EXPECT_EQ(Bin(ic, ip), Bin(4, 0));
    four.getBinAngles(1.57, 1.0, ic, ip);
    EXPECT_EQ(Bin(ic, ip), Bin(0, 1));
    four.getBinCosine(1.0, 0.0, ic, ip);
    EXPECT_EQ(Bin(ic, ip), Bin(3, 0));
    four.getBinCosine(-0.1, 0.0, ic, ip);
    EXPECT_EQ(ic, 4294967295u);
}

TEST(RnHistogramSpherical, isUsedAsItsCommentShows)
{
    const float cosTheta = -0.3f, phi = 2.0f;
    Vn::RnHistogramSpherical<float> histogram(8, 16);
    histogram.addSampleCosine(cosTheta, phi);
    std::ostringstream file;
    histogram.dumpInventor(file);
    EXPECT_EQ(histogram.getTotal(), 1.0f);
    const RnHistogramSpherical<double> four(4, 8);
    unsigned int ic, ip;
    four.getBinAngles(0.0, 0.0, ic, ip);
    EXPECT_EQ(Bin(ic, ip), Bin(4, 0));
    four.getBinAngles(3.14, 1.0, ic, ip);
    EXPECT_EQ(Bin(ic, ip), Bin(0, 1));
    four.getBinCosine(1.0, 0.0, ic, ip);
    EXPECT_EQ(Bin(ic, ip), Bin(3, 0));
    four.getBinCosine(-1.0, 7.0, ic, ip);
    EXPECT_EQ(Bin(ic, ip), Bin(0, 7));
}
