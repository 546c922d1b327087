#include "expectthrow.h"
#include "rnscripted.h"

#include <base/exinternalerror.h>
#include <base/rngaussianrng.h>
#include <base/rnhistogramrng.h>
#include <base/rnlecuyeruniformrng.h>
#include <base/rnmath_p.h>
#include <base/rnmexicanhatrng.h>
#include <base/rnseparablemultirng.h>
#include <base/rnvandercorputrng.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

using Vn::RnAsymmetricalSeparableBiRng;
using Vn::RnGaussianRng;
using Vn::RnLecuyerUniformRng;
using Vn::RnMexicanHatRng;
using Vn::RnSeparableBiRng;
using Vn::RnSeparableMultiRng;
using Vn::RnVanDerCorputRng;
using VnTest::ScriptedRng;

namespace
{
struct GaussianRow
{
    std::uint32_t single;
    std::uint64_t twice;
};

constexpr GaussianRow gaussianRows[] = {
#include "../reference/gaussian.inc"
};

struct TriangleRow
{
    double u;
    std::uint32_t single;
    std::uint64_t twice;
};

constexpr TriangleRow triangleRows[] = {
#include "../reference/triangle.inc"
};

void expectReckoned(float value, std::uint32_t single, std::uint64_t, double)
{
    EXPECT_EQ(std::bit_cast<std::uint32_t>(value), single);
}

void expectReckoned(double value, std::uint32_t, std::uint64_t twice, double tolerance)
{
    const double expected = std::bit_cast<double>(twice);
    EXPECT_NEAR(value, expected, tolerance * std::abs(expected));
}

std::uint64_t bitsOf(float value)
{
    return std::bit_cast<std::uint32_t>(value);
}

std::uint64_t bitsOf(double value)
{
    return std::bit_cast<std::uint64_t>(value);
}

/// The polar method as it is told.
template <class Source, class T>
class PlainGaussian
{
public:
    PlainGaussian(Source& source, T mean, T sigma) : _source(source), _mean(mean), _sigma(sigma) {}

    T draw()
    {
        if (_hasSpare) {
            _hasSpare = false;
            return _spare * _sigma + _mean;
        }
        T a, b, s;
        do {
            a = T(2) * _source() - T(1);
            b = T(2) * _source() - T(1);
            s = a * a + b * b;
        } while (!(s < T(1)));
        const T f = std::sqrt(T(-2) * Vn::RnMath::log(s) / s);
        _spare = b * f;
        _hasSpare = true;
        return a * f * _sigma + _mean;
    }

private:
    Source& _source;
    T _mean, _sigma;
    bool _hasSpare = false;
    T _spare = T(0);
};

void expectAssertion(std::function<void()> const& call, std::string const& condition, char const* file)
{
    VnTest::expectThrow<Vn::ExInternalError, std::runtime_error>(call,
                                                                 ("Assertion '" + condition + "' failed.").c_str());
    try {
        call();
    } catch (Vn::ExBase const& failure) {
        EXPECT_STREQ(failure.getFileName(), file);
    }
}

/// Bins that are filled by their number, so that one without a width can be filled too: a number to draw exactly.
template <class T>
class Counted : public Vn::RnHistogram<T>
{
public:
    using Vn::RnHistogram<T>::RnHistogram;
    int getBin(T x) const override { return static_cast<int>(x); }
};

template <class T>
class RnDistributionTest : public testing::Test
{};

using Types = testing::Types<float, double>;
}  // namespace

TYPED_TEST_SUITE(RnDistributionTest, Types);

TYPED_TEST(RnDistributionTest, gaussianGivesTheReckonedNumbers)
{
    using T = TypeParam;
    RnLecuyerUniformRng<T> uniform;
    RnGaussianRng<T> gaussian(&uniform, T(10), T(2));
    for (GaussianRow const& row : gaussianRows)
        expectReckoned(gaussian(), row.single, row.twice, 1e-15);
}

TYPED_TEST(RnDistributionTest, gaussianInEveryFormIsBitForBitOneStream)
{
    using T = TypeParam;
    RnLecuyerUniformRng<T> uniform(1, 7), same(1, 7);
    RnGaussianRng<T> gaussian(&uniform, T(0.25), T(3));
    PlainGaussian plain(same, T(0.25), T(3));
    std::vector<T> samples(5000);
    unsigned int wrong = 0;
    for (unsigned int round = 0; round < 5; ++round) {
        for (unsigned int size : {0u, 1u, 2u, 3u, 7u, 255u, 256u, 257u, 258u, 1u, 1u, 511u, 4096u, 5000u}) {
            gaussian.getSequence(size, samples.data());
            for (unsigned int i = 0; i < size; ++i)
                wrong += bitsOf(samples[i]) != bitsOf(plain.draw()) ? 1 : 0;
            T sample;
            gaussian.getSample(sample);
            wrong += bitsOf(sample) != bitsOf(plain.draw()) ? 1 : 0;
            // In every other round the sequences begin with the half of a pair that waits.
            if (size % 2 == round % 2)
                wrong += bitsOf(gaussian()) != bitsOf(plain.draw()) ? 1 : 0;
        }
    }
    EXPECT_EQ(wrong, 0u);
    EXPECT_EQ(uniform(), same());  // no draw too many
}

TYPED_TEST(RnDistributionTest, gaussianAsksOthersSourcesBySingleDraws)
{
    using T = TypeParam;
    ScriptedRng<T> source({T(0.75), T(0.5), T(1), T(1), T(0.25), T(0.5)});
    RnGaussianRng<T> gaussian(&source);
    gaussian();
    EXPECT_EQ(source.draws, 2u);
    gaussian();
    EXPECT_EQ(source.draws, 2u);  // the pair's second half
    gaussian();
    EXPECT_EQ(source.draws, 6u);  // a pair outside the circle, and another
    T samples[3];
    gaussian.getSequence(1, samples);
    EXPECT_EQ(source.draws, 6u);
    gaussian.getSequence(3, samples);
    EXPECT_EQ(source.draws, 12u);
}

TYPED_TEST(RnDistributionTest, gaussianSequenceOfOneAndASampleAreAPair)
{
    using T = TypeParam;
    RnLecuyerUniformRng<T> uniform, same;
    RnGaussianRng<T> gaussian(&uniform), plain(&same);
    T first, second;
    gaussian.getSequence(1, &first);
    gaussian.getSequence(0, nullptr);  // leaves the other half where it is
    gaussian.getSample(second);
    EXPECT_EQ(first, plain());
    EXPECT_EQ(second, plain());
}

TYPED_TEST(RnDistributionTest, gaussianRestartKeepsTheSpare)
{
    using T = TypeParam;
    std::string journal;
    ScriptedRng<T> source({T(0.75), T(0.5), T(0.5), T(0.75)});
    source.journal = &journal;
    RnGaussianRng<T> gaussian(&source);
    const T first = gaussian();
    gaussian.restart();
    EXPECT_EQ(journal, "r");
    EXPECT_EQ(gaussian(), T(0));  // b was 2 * 0.5 - 1
    EXPECT_EQ(source.draws, 0u);
    EXPECT_EQ(gaussian(), first);
}

TYPED_TEST(RnDistributionTest, gaussianOfTheMiddleTwiceIsNotANumber)
{
    using T = TypeParam;
    ScriptedRng<T> source({T(0.5)});
    RnGaussianRng<T> gaussian(&source);
    EXPECT_TRUE(std::isnan(gaussian()));
    EXPECT_TRUE(std::isnan(gaussian()));
    EXPECT_EQ(source.draws, 2u);  // not rejected
}

TYPED_TEST(RnDistributionTest, gaussianInBulkMeetsTheMiddleAsSingleDrawsDo)
{
    using T = TypeParam;
    // A quarter of the numbers is exactly 0.5 and another exactly 1: one pair in 16 makes not-a-number among others that
    // don't, and two in 16 lie on the circle, which is outside.
    const T edges[] = {T(0.25), T(0.5), T(0.5), T(0.75), T(1), T(1)};
    Counted<T> histogram(5, edges);
    for (int bin : {0, 1, 2, 4})
        histogram.addSample(static_cast<T>(bin), T(1));
    RnLecuyerUniformRng<T> uniform, same;
    Vn::RnHistogramRng<T> source(histogram, &uniform), plainSource(histogram, &same);
    RnGaussianRng<T> gaussian(&source, T(1), T(2));
    PlainGaussian plain(plainSource, T(1), T(2));
    int missing = 0, wrong = 0;
    for (unsigned int size : {1000u, 256u, 7u}) {
        std::vector<T> samples(size);
        gaussian.getSequence(size, samples.data());
        for (T sample : samples) {
            const T expected = plain.draw();
            missing += std::isnan(expected) ? 1 : 0;
            wrong += bitsOf(sample) != bitsOf(expected) && !(std::isnan(sample) && std::isnan(expected)) ? 1 : 0;
        }
    }
    EXPECT_EQ(wrong, 0);
    EXPECT_GT(missing, 50);
    EXPECT_LT(missing, 400);
    EXPECT_EQ(uniform(), same());
}

TYPED_TEST(RnDistributionTest, gaussianInBulkCountsItsFailuresForEachPairByItself)
{
    using T = TypeParam;
    // Some 2,500 pairs to one that lies in the circle: for one they don't pass the limit, for 128 they would.
    const T edges[] = {T(0), T(0), T(0.45), T(0.55)};
    Counted<T> histogram(3, edges);
    histogram.addSample(T(0), T(49));
    histogram.addSample(T(2), T(1));
    RnLecuyerUniformRng<T> uniform, same;
    Vn::RnHistogramRng<T> source(histogram, &uniform), plainSource(histogram, &same);
    RnGaussianRng<T> gaussian(&source), plain(&plainSource);
    std::vector<T> samples(301);
    gaussian.getSequence(301, samples.data());
    int wrong = 0;
    for (T sample : samples)
        wrong += bitsOf(sample) != bitsOf(plain()) ? 1 : 0;
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(uniform(), same());
}

TYPED_TEST(RnDistributionTest, gaussianInBulkFindsAPairThatComesLateAsSingleDrawsDo)
{
    using T = TypeParam;
    // Points that rise from 0 by steps so small that the first pair in the circle is near the end of what is tried for one.
    for (unsigned int base : {880000u, 893000u, 894000u, 894900u}) {
        SCOPED_TRACE(base);
        Vn::RnVanDerCorputRng<T> rising(base), same(base);
        RnGaussianRng<T> bulk(&rising), single(&same);
        std::vector<T> samples(600);
        bulk.getSequence(600, samples.data());
        EXPECT_FALSE(std::isnan(samples[0]));
        for (T sample : samples)
            ASSERT_EQ(bitsOf(sample), bitsOf(single()));
    }
}

TYPED_TEST(RnDistributionTest, gaussianTakesPairsInsideTheCircleAlone)
{
    using T = TypeParam;
    ScriptedRng<T> source({T(1), T(0.5), std::nextafter(T(1), T(0)), T(0.5)});
    RnGaussianRng<T> gaussian(&source);
    EXPECT_GT(gaussian(), T(0));
    EXPECT_EQ(source.draws, 4u);  // a square of 1 is drawn again, one just below isn't
}

TYPED_TEST(RnDistributionTest, wrappersShareTheSequenceOfOneSource)
{
    using T = TypeParam;
    ScriptedRng<T> source({T(0.25), T(0.75), T(0.5), T(0.125), T(0), T(1)});
    {
        RnMexicanHatRng<T> one(&source), other(&source, T(10), T(2));
        EXPECT_EQ(one(), std::sqrt(T(0.5)) * T(0.5) - T(0.5));  // of 0.25
        EXPECT_EQ(other(), T(11) - std::sqrt(T(0.5)));          // of 0.75
        RnSeparableBiRng<T> pairs(&one);
        T x, y;
        pairs.getSample(x, y);
        EXPECT_TRUE(x == T(0) && y == T(-0.25));  // of 0.5 and 0.125
        RnAsymmetricalSeparableBiRng<T> both(&source, &source);
        both.getSample(x, y);
        EXPECT_TRUE(x == T(0) && y == T(1));
    }
    EXPECT_EQ(source.draws, 6u);
    EXPECT_EQ(source(), T(0.25));  // the wrappers are gone, the source isn't
}

TYPED_TEST(RnDistributionTest, gaussianOverAStuckSourceEnds)
{
    using T = TypeParam;
    for (T stuck : {T(1), T(0), std::numeric_limits<T>::quiet_NaN(), std::numeric_limits<T>::infinity()}) {
        ScriptedRng<T> source({stuck});
        RnGaussianRng<T> gaussian(&source);
        EXPECT_TRUE(std::isnan(gaussian()));
        EXPECT_TRUE(std::isnan(gaussian()));
        EXPECT_EQ(source.draws, 131072u);
    }
    // In bulk over a source of ours it comes to the same.
    RnVanDerCorputRng<T> zeros(1);
    RnGaussianRng<T> gaussian(&zeros);
    T samples[5];
    gaussian.getSequence(5, samples);
    for (T sample : samples)
        EXPECT_TRUE(std::isnan(sample));
    EXPECT_TRUE(std::isnan(gaussian()));
    zeros.setPrimeNumber(2);
    RnVanDerCorputRng<T> fresh(2);
    fresh.restart(3 * 131072);  // three pairs
    EXPECT_EQ(zeros(), fresh());
}

TYPED_TEST(RnDistributionTest, gaussianTellsItsRangeAndDensity)
{
    using T = TypeParam;
    RnLecuyerUniformRng<T> uniform;
    const RnGaussianRng<T> standard(&uniform), gaussian(&uniform, T(10), T(2));
    EXPECT_STREQ(gaussian.getName(), "Gaussian");
    EXPECT_EQ(standard.getMean(), T(0));
    EXPECT_EQ(standard.getSigma(), T(1));
    EXPECT_EQ(gaussian.getMean(), T(10));
    EXPECT_EQ(gaussian.getSigma(), T(2));
    EXPECT_EQ(gaussian.getEfficientWidth(), T(8));
    EXPECT_EQ(gaussian.getEfficientMin(), T(6));
    EXPECT_EQ(gaussian.getEfficientMax(), T(14));
    if constexpr (sizeof(T) == 4)
        EXPECT_EQ(std::bit_cast<std::uint32_t>(gaussian.getEfficientFraction()), 0x3F7FFBD9u);
    else
        EXPECT_EQ(gaussian.getEfficientFraction(), 0.99993666);
    EXPECT_EQ(standard.getPdf(T(0)), sizeof(T) == 4 ? T(0.39894226f) : T(0.3989422804014327));
    EXPECT_EQ(gaussian.getPdf(T(10)), standard.getPdf(T(0)) / T(2));
    const T atThree = std::exp(T(-0.5) / T(4) * T(9)) * (standard.getPdf(T(0)) / T(2));
    EXPECT_NEAR(gaussian.getPdf(T(13)), atThree, T(4) * std::numeric_limits<T>::epsilon() * atThree);
    EXPECT_EQ(gaussian.getPdf(T(13)), gaussian.getPdf(T(7)));
    EXPECT_TRUE(std::isnan(gaussian.getPdf(std::numeric_limits<T>::quiet_NaN())));
}

TYPED_TEST(RnDistributionTest, densitiesAreFormedInTheirOrder)
{
    using T = TypeParam;
    RnLecuyerUniformRng<T> uniform;
    const T centre = T(0.3), size = T(0.7);
    const RnGaussianRng<T> gaussian(&uniform, centre, size);
    const RnMexicanHatRng<T> triangle(&uniform, centre, size);
    const T normalisation = (sizeof(T) == 4 ? T(0.39894226f) : T(0.3989422804014327)) / size;
    const T inverse = T(1) / (size * T(0.5));
    int wrong = 0;
    for (int i = 0; i < 1000; ++i) {
        const T x = uniform(T(-1), T(2)), distance = x - centre;
        const T exponent = (T(-0.5) / (size * size)) * (distance * distance);
        const T bell = static_cast<T>(std::exp(static_cast<double>(exponent))) * normalisation;
        const T slope = (T(1) - std::abs(distance) * inverse) * inverse;
        wrong += gaussian.getPdf(x) != bell || triangle.getPdf(x) != std::max(slope, T(0)) ? 1 : 0;
    }
    EXPECT_EQ(wrong, 0);
}

TYPED_TEST(RnDistributionTest, gaussianChecksItsArguments)
{
    using T = TypeParam;
    RnLecuyerUniformRng<T> uniform;
    char const* const file = "src/base/rngaussianrng";
    expectAssertion([] { RnGaussianRng<T> bad(nullptr); }, "_uniRng", file);
    expectAssertion([] { RnGaussianRng<T> bad(nullptr, T(0), T(-1)); }, "_uniRng", file);
    for (T sigma : {T(0), T(-1), std::numeric_limits<T>::quiet_NaN()})
        expectAssertion([&] { RnGaussianRng<T> bad(&uniform, T(0), sigma); }, "_sigma > 0", file);
    RnGaussianRng<T> good(&uniform, T(0), std::numeric_limits<T>::min());
}

TYPED_TEST(RnDistributionTest, triangleGivesTheReckonedNumbers)
{
    using T = TypeParam;
    for (TriangleRow const& row : triangleRows) {
        ScriptedRng<T> source({static_cast<T>(row.u)});
        RnMexicanHatRng<T> triangle(&source, T(0.75), T(2.5));
        const T value = triangle();
        EXPECT_EQ(bitsOf(value), sizeof(T) == 4 ? row.single : row.twice);
        T other;
        triangle.getSample(other);
        EXPECT_EQ(other, value);
        triangle.getSequence(1, &other);
        EXPECT_EQ(other, value);
    }
}

TYPED_TEST(RnDistributionTest, triangleMeetsItsCentreAndItsEnds)
{
    using T = TypeParam;
    ScriptedRng<T> source({T(0.5), T(0), T(1)});
    RnMexicanHatRng<T> triangle(&source);
    EXPECT_EQ(triangle(), T(0));
    EXPECT_EQ(triangle(), T(-0.5));
    EXPECT_EQ(triangle(), T(0.5));
}

TYPED_TEST(RnDistributionTest, triangleInBulkIsBitForBitItsSingleDraws)
{
    using T = TypeParam;
    RnLecuyerUniformRng<T> uniform, same;
    RnMexicanHatRng<T> triangle(&uniform, T(1), T(4)), plain(&same, T(1), T(4));
    std::vector<T> samples(3001);
    for (unsigned int size : {0u, 1u, 2u, 100u, 3001u}) {
        triangle.getSequence(size, samples.data());
        for (unsigned int i = 0; i < size; ++i)
            ASSERT_EQ(bitsOf(samples[i]), bitsOf(plain()));
    }
}

TYPED_TEST(RnDistributionTest, triangleTellsItsRangeAndDensity)
{
    using T = TypeParam;
    std::string journal;
    ScriptedRng<T> source({T(0)});
    source.journal = &journal;
    RnMexicanHatRng<T> triangle(&source, T(1), T(4)), standard(&source);
    EXPECT_STREQ(triangle.getName(), "Mexican Hat");
    EXPECT_EQ(triangle.getEfficientWidth(), T(4));
    EXPECT_EQ(triangle.getEfficientMin(), T(-1));
    EXPECT_EQ(triangle.getEfficientMax(), T(3));
    EXPECT_EQ(triangle.getEfficientFraction(), T(1));
    EXPECT_EQ(triangle.getPdf(T(1)), T(0.5));
    EXPECT_EQ(triangle.getPdf(T(2)), T(0.25));
    EXPECT_EQ(triangle.getPdf(T(0)), T(0.25));
    EXPECT_EQ(triangle.getPdf(T(3)), T(0));
    EXPECT_EQ(triangle.getPdf(T(-1)), T(0));
    EXPECT_EQ(triangle.getPdf(T(9)), T(0));
    EXPECT_EQ(triangle.getPdf(std::numeric_limits<T>::quiet_NaN()), T(0));
    EXPECT_EQ(standard.getPdf(T(0)), T(2));
    EXPECT_EQ(standard.getEfficientWidth(), T(1));
    triangle.restart();
    EXPECT_EQ(journal, "r");
}

TYPED_TEST(RnDistributionTest, triangleChecksItsArguments)
{
    using T = TypeParam;
    RnLecuyerUniformRng<T> uniform;
    char const* const file = "src/base/rnmexicanhatrng";
    expectAssertion([] { RnMexicanHatRng<T> bad(nullptr); }, "rng != 0", file);
    expectAssertion([] { RnMexicanHatRng<T> bad(nullptr, T(0), T(0)); }, "rng != 0", file);
    for (T width : {T(0), T(-1), std::numeric_limits<T>::quiet_NaN(), std::numeric_limits<T>::denorm_min()})
        expectAssertion([&] { RnMexicanHatRng<T> bad(&uniform, T(0), width); }, "_halfwidth > 0", file);
}

TYPED_TEST(RnDistributionTest, separableDrawsInOrderAndPairsOtherwiseInBulk)
{
    using T = TypeParam;
    ScriptedRng<T> source({T(0), T(1), T(2), T(3), T(4), T(5)});
    RnSeparableBiRng<T> points(&source);
    T x, y;
    points.getSample(x, y);
    EXPECT_TRUE(x == T(0) && y == T(1));
    points.getSample(x, y);
    EXPECT_TRUE(x == T(2) && y == T(3));
    points.restart();
    T xs[2], ys[2];
    points.getSequence(2, xs, ys);
    EXPECT_TRUE(xs[0] == T(0) && xs[1] == T(1) && ys[0] == T(2) && ys[1] == T(3));

    source.restart();
    RnSeparableMultiRng<T, 3> cube(&source);
    T point[3];
    cube.getSample(point);
    EXPECT_TRUE(point[0] == T(0) && point[1] == T(1) && point[2] == T(2));
    cube.restart();
    T zs[2];
    T* arrays[3] = {xs, ys, zs};
    cube.getSequence(2, arrays);
    EXPECT_TRUE(xs[1] == T(1) && ys[0] == T(2) && zs[0] == T(4) && zs[1] == T(5));
    cube.getSequence(0, arrays);
    EXPECT_EQ(source.draws, 6u);
}

TYPED_TEST(RnDistributionTest, separableSequencesAreTheirSourcesSequences)
{
    using T = TypeParam;
    class Bulk : public ScriptedRng<T>
    {
    public:
        Bulk() : ScriptedRng<T>({T(0)}) {}
        void getSequence(unsigned int n, T* samples) override
        {
            ++calls;
            std::fill(samples, samples + n, static_cast<T>(calls));
        }
        int calls = 0;
    };
    Bulk source, other;
    T xs[2], ys[2], zs[2];
    RnSeparableBiRng<T>(&source).getSequence(2, xs, ys);
    EXPECT_TRUE(xs[0] == T(1) && xs[1] == T(1) && ys[0] == T(2) && ys[1] == T(2));
    RnAsymmetricalSeparableBiRng<T>(&other, &source).getSequence(2, xs, ys);
    EXPECT_TRUE(xs[1] == T(1) && ys[1] == T(3));
    T* arrays[3] = {xs, ys, zs};
    RnSeparableMultiRng<T, 3>(&source).getSequence(2, arrays);
    EXPECT_TRUE(xs[1] == T(4) && ys[1] == T(5) && zs[1] == T(6));
    EXPECT_EQ(source.draws + other.draws, 0u);
}

TYPED_TEST(RnDistributionTest, separableTellsItsSourcesRangeAndDensity)
{
    using T = TypeParam;
    std::string journal;
    ScriptedRng<T> source({T(0)});
    source.journal = &journal;
    RnSeparableBiRng<T> points(&source);
    RnSeparableMultiRng<T, 3> cube(&source);
    T x, y, point[3];
    points.getEfficientWidth(x, y);
    EXPECT_TRUE(x == T(6) && y == T(6));
    points.getEfficientMin(x, y);
    EXPECT_TRUE(x == T(-2) && y == T(-2));
    points.getEfficientMax(x, y);
    EXPECT_TRUE(x == T(4) && y == T(4));
    EXPECT_EQ(points.getEfficientFraction(), T(0.25));
    EXPECT_EQ(points.getPdf(T(3), T(5)), T(60));
    cube.getEfficientWidth(point);
    EXPECT_TRUE(point[0] == T(6) && point[1] == T(6) && point[2] == T(6));
    cube.getEfficientMin(point);
    EXPECT_TRUE(point[0] == T(-2) && point[1] == T(-2) && point[2] == T(-2));
    cube.getEfficientMax(point);
    EXPECT_TRUE(point[0] == T(4) && point[1] == T(4) && point[2] == T(4));
    EXPECT_EQ(cube.getEfficientFraction(), T(0.125));
    point[0] = T(1);
    point[1] = T(2);
    point[2] = T(3);
    EXPECT_EQ(cube.getPdf(point), T(48));
    EXPECT_STREQ(points.getName(), "Symmetrical Bi Separable");
    EXPECT_STREQ(cube.getName(), "Multi Separable");
    points.restart();
    cube.restart();
    EXPECT_EQ(journal, "rr");
}

TYPED_TEST(RnDistributionTest, separableOverAGaussianHasItsRange)
{
    using T = TypeParam;
    RnLecuyerUniformRng<T> uniform;
    RnGaussianRng<T> gaussian(&uniform);
    const RnSeparableBiRng<T> points(&gaussian);
    T x, y;
    points.getEfficientMin(x, y);
    EXPECT_TRUE(x == T(-2) && y == T(-2));
    points.getEfficientMax(x, y);
    EXPECT_TRUE(x == T(2) && y == T(2));
    EXPECT_EQ(points.getEfficientFraction(), gaussian.getEfficientFraction() * gaussian.getEfficientFraction());
}

TYPED_TEST(RnDistributionTest, asymmetricalKeepsItsSourcesApart)
{
    using T = TypeParam;
    std::string journal;
    ScriptedRng<T> first({T(0), T(1), T(2), T(3)}), second({T(10), T(11), T(12), T(13)});
    first.journal = second.journal = &journal;
    first.name = '0';
    second.name = '1';
    RnAsymmetricalSeparableBiRng<T> points(&first, &second);
    T x, y, xs[2], ys[2];
    points.getSample(x, y);
    EXPECT_TRUE(x == T(0) && y == T(10));
    points.getSequence(2, xs, ys);
    EXPECT_TRUE(xs[0] == T(1) && xs[1] == T(2) && ys[0] == T(11) && ys[1] == T(12));
    points.restart();
    EXPECT_EQ(journal, "01");
    EXPECT_STREQ(points.getName(), "Assymetrical Bi Separable");

    RnGaussianRng<T> gaussian(&first, T(5), T(2));
    RnMexicanHatRng<T> triangle(&second, T(1), T(4));
    const RnAsymmetricalSeparableBiRng<T> mixed(&gaussian, &triangle);
    mixed.getEfficientWidth(x, y);
    EXPECT_TRUE(x == T(8) && y == T(4));
    mixed.getEfficientMin(x, y);
    EXPECT_TRUE(x == T(1) && y == T(-1));
    mixed.getEfficientMax(x, y);
    EXPECT_TRUE(x == T(9) && y == T(3));
    EXPECT_EQ(mixed.getEfficientFraction(), gaussian.getEfficientFraction());
    EXPECT_EQ(mixed.getPdf(T(4), T(2)), gaussian.getPdf(T(4)) * triangle.getPdf(T(2)));
}

TYPED_TEST(RnDistributionTest, separableChecksItsSources)
{
    using T = TypeParam;
    RnLecuyerUniformRng<T> uniform;
    char const* const file = "src/base/rnseparablemultirng";
    expectAssertion([] { RnSeparableBiRng<T> bad(nullptr); }, "_uniRng", file);
    expectAssertion([] { RnSeparableMultiRng<T, 3> bad(nullptr); }, "_uniRng", file);
    expectAssertion([] { RnAsymmetricalSeparableBiRng<T> bad(nullptr, nullptr); }, "_uniRng0", file);
    expectAssertion([&] { RnAsymmetricalSeparableBiRng<T> bad(&uniform, nullptr); }, "_uniRng1", file);
}

// The lines of use and the examples of edges that the classes' comments show.

TEST(RnRng, isUsedAsItsCommentShows)
{
    std::vector<float> numbers(4096);
    float* const array = numbers.data();
    Vn::RnVanDerCorputRng<float> source(3);
    Vn::RnGaussianRng<float> gaussian(&source);
    const float one = gaussian();       // one sample
    gaussian.getSequence(4096, array);  // many, without a virtual call for each
    source.restart();
    RnGaussianRng<float> again(&source);
    EXPECT_EQ(again(), one);
    EXPECT_EQ(again(), numbers[0]);
}

TEST(RnGaussian, isUsedAsItsCommentShows)
{
    Vn::RnLecuyerUniformRng<float> uniform;
    Vn::RnGaussianRng<float> gaussian(&uniform, 10.0f, 2.0f);
    const float number = gaussian();  // mostly between 6 and 14
    EXPECT_LT(std::abs(number - 10.0f), 12.0f);
    EXPECT_EQ(gaussian.getEfficientWidth(), 8.0f);
    EXPECT_EQ(gaussian.getEfficientMin(), 6.0f);
    EXPECT_EQ(gaussian.getEfficientMax(), 14.0f);
    RnLecuyerUniformRng<double> source;
    const RnGaussianRng<double> standard(&source);
    EXPECT_NEAR(standard.getPdf(0.0), 0.3989, 1e-4);
    EXPECT_NEAR(standard.getPdf(1.0), 0.2420, 1e-4);
    EXPECT_EQ(standard.getPdf(-1.0), standard.getPdf(1.0));
    EXPECT_EQ(standard.getPdf(std::numeric_limits<double>::infinity()), 0.0);
}

TEST(RnMexicanHat, isUsedAsItsCommentShows)
{
    ScriptedRng<double> uniform({0.0, 0.125, 0.5, 0.875});
    Vn::RnMexicanHatRng<double> triangle(&uniform, 0.0, 2.0);  // from -1 to 1
    for (double expected : {-1.0, -0.5, 0.0, 0.5}) {
        const double number = triangle();
        EXPECT_EQ(number, expected);
    }
    const struct
    {
        double x, density;
    } table[] = {{0, 1}, {0.5, 0.5}, {1, 0}, {7, 0}};
    for (auto const& row : table)
        EXPECT_EQ(triangle.getPdf(row.x), row.density) << row.x;
}

TEST(RnSeparable, isUsedAsItsCommentShows)
{
    Vn::RnLecuyerUniformRng<float> uniform;
    Vn::RnSeparableBiRng<float> square(&uniform);
    EXPECT_EQ(square.getPdf(0.5f, 0.5f), 1.0f);
    EXPECT_EQ(square.getPdf(0.5f, 1.0f), 0.0f);
    Vn::RnSeparableMultiRng<float, 3> cube(&uniform);
    EXPECT_EQ(cube.getEfficientFraction(), 1.0f);

    ScriptedRng<float> draws({0, 1, 2, 3});
    RnSeparableBiRng<float> pairs(&draws);
    float x[2], y[2];
    pairs.getSample(x[0], y[0]);
    pairs.getSample(x[1], y[1]);
    EXPECT_TRUE(x[0] == 0 && y[0] == 1 && x[1] == 2 && y[1] == 3);
    pairs.getSequence(2, x, y);
    EXPECT_TRUE(x[0] == 0 && y[0] == 2 && x[1] == 1 && y[1] == 3);
}

TEST(RnAsymmetricalSeparable, isUsedAsItsCommentShows)
{
    Vn::RnVanDerCorputRng<float> base2(2), base3(3);
    Vn::RnAsymmetricalSeparableBiRng<float> points(&base2, &base3);
    float x, y;
    points.getSample(x, y);
    EXPECT_TRUE(x == 0.5f && y == 1.0f / 3);
    EXPECT_EQ(points.getEfficientFraction(), 1.0f);
    RnGaussianRng<float> gaussian(&base2);
    const RnAsymmetricalSeparableBiRng<float> mixed(&base2, &gaussian);
    EXPECT_NEAR(mixed.getPdf(0.5f, 0.0f), 0.3989f, 1e-4f);
    EXPECT_EQ(mixed.getPdf(1.5f, 0.0f), 0.0f);
}

// Whoever asks what stands behind a generator gets the object that it was made with.
TEST(RnGaussian, tellsItsSourceAsDoTheOthersThatDrawFromOne)
{
    RnLecuyerUniformRng<double> uniform;
    const RnGaussianRng<double> gaussian(&uniform);
    const RnMexicanHatRng<double> triangle(&uniform);
    const Vn::RnHistogramRng<double> histogram(Vn::RnHistogram<double>(2, 0.0, 1.0), &uniform);
    EXPECT_EQ(gaussian.getSource(), &uniform);
    EXPECT_EQ(triangle.getSource(), &uniform);
    EXPECT_EQ(histogram.getSource(), &uniform);
}
