#include "expectthrow.h"

#include <base/exinternalerror.h>
#include <base/rnhaltonbirng.h>
#include <base/rnhaltonmultirng.h>
#include <base/rnhammersleybirng.h>
#include <base/rnhammersleymultirng.h>
#include <base/rnniederreitermultirng.h>
#include <base/rnniederreitertable_p.h>
#include <base/rnradicalinverse_p.h>
#include <base/rnvandercorputrng.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <type_traits>
#include <vector>

using Vn::RnHaltonBiRng;
using Vn::RnHaltonMultiRng;
using Vn::RnHammersleyBiRng;
using Vn::RnHammersleyMultiRng;
using Vn::RnNiederreiterMultiRng;
using Vn::RnRadicalInverse;
using Vn::RnVanDerCorputRng;

namespace
{
struct InverseRow
{
    unsigned int base, n;
    std::uint32_t single;
    std::uint64_t twice;
};

constexpr InverseRow inverseRows[] = {
#include "../reference/inverses.inc"
};

constexpr Vn::RnNiederreiterTable::Point niederreiterRows[] = {
#include "../reference/niederreiterrows.inc"
};

struct PointRow
{
    unsigned int index;
    std::uint32_t point[4];
};

constexpr PointRow pointRows[] = {
#include "../reference/niederreiterpoints.inc"
};

std::uint64_t expectedBits(InverseRow const& row, float)
{
    return row.single;
}

std::uint64_t expectedBits(InverseRow const& row, double)
{
    return row.twice;
}

std::uint64_t bitsOf(float value)
{
    return std::bit_cast<std::uint32_t>(value);
}

std::uint64_t bitsOf(double value)
{
    return std::bit_cast<std::uint64_t>(value);
}

template <class T>
T plain(unsigned int base, unsigned int n)
{
    return RnRadicalInverse<T>::byDigits(base, T(1) / static_cast<T>(base), n);
}

template <class T>
class RnQuasiTest : public testing::Test
{};

using Types = testing::Types<float, double>;

/// Arrays for a sequence in N dimensions.
template <class T, int N>
struct Arrays
{
    explicit Arrays(unsigned int n)
    {
        for (int d = 0; d < N; ++d) {
            values[d].resize(n, T(-7));
            pointers[d] = values[d].data();
        }
    }

    std::vector<T> values[N];
    T* pointers[N];
};

template <class Rng, class T, int N>
void expectUnitBox(Rng& rng)
{
    T values[N];
    auto const expectAll = [&values](T expected) {
        for (T value : values)
            EXPECT_EQ(value, expected);
    };
    rng.getEfficientWidth(values);
    expectAll(T(1));
    rng.getEfficientMin(values);
    expectAll(T(0));
    rng.getEfficientMax(values);
    expectAll(T(1));
    EXPECT_EQ(rng.getEfficientFraction(), T(1));
    for (int d = 0; d < N; ++d) {
        std::fill(values, values + N, T(0));
        EXPECT_EQ(rng.getPdf(values), T(1));
        for (T outside : {T(1), -std::numeric_limits<T>::denorm_min(), std::numeric_limits<T>::quiet_NaN()}) {
            values[d] = outside;
            EXPECT_EQ(rng.getPdf(values), T(0));
        }
        values[d] = std::nextafter(T(1), T(0));
        EXPECT_EQ(rng.getPdf(values), T(1));
    }
}
}  // namespace

TYPED_TEST_SUITE(RnQuasiTest, Types);

TYPED_TEST(RnQuasiTest, radicalInversesAreTheReckonedOnes)
{
    using T = TypeParam;
    for (InverseRow const& row : inverseRows) {
        SCOPED_TRACE(testing::Message() << "base " << row.base << ", number " << row.n);
        RnVanDerCorputRng<T> rng(row.base);
        rng.restart(row.n - 1);
        EXPECT_EQ(bitsOf(rng()), expectedBits(row, T(0)));
        rng.restart(row.n - 1);
        T one;
        rng.getSequence(1, &one);
        EXPECT_EQ(bitsOf(one), expectedBits(row, T(0)));
        EXPECT_EQ(bitsOf(plain<T>(row.base, row.n)), expectedBits(row, T(0)));
    }
}

TYPED_TEST(RnQuasiTest, radicalInversesInEveryFormAreBitForBitTheRule)
{
    using T = TypeParam;
    std::vector<T> samples(5000);
    for (unsigned int base :
         {2u, 3u, 4u, 5u, 6u, 7u, 11u, 31u, 32u, 33u, 97u, 512u, 1000u, 1024u, 1025u, 65536u, 4294967295u}) {
        for (unsigned int start : {0u, 1u, 200u, 728u, 59048u, 16777214u, 33554000u, 33554431u, 2147483000u,
                                   2147483647u, 4000000000u, 4294962000u}) {
            for (unsigned int size : {0u, 1u, 5u, 64u, 255u, 700u, 4096u}) {
                RnVanDerCorputRng<T> rng(base);
                rng.restart(start);
                rng.getSequence(size, samples.data());
                unsigned int wrong = 0;
                for (unsigned int i = 0; i < size; ++i)
                    wrong += bitsOf(samples[i]) != bitsOf(plain<T>(base, start + 1 + i)) ? 1 : 0;
                wrong += bitsOf(rng()) != bitsOf(plain<T>(base, start + 1 + size)) ? 1 : 0;
                EXPECT_EQ(wrong, 0u) << "base " << base << ", start " << start << ", size " << size;
            }
        }
    }
}

TYPED_TEST(RnQuasiTest, singlePointsOfTheDefaultBasesAreBitForBitTheRuleAllOver)
{
    using T = TypeParam;
    std::uint32_t n = 1;
    int wrong = 0;
    for (int i = 0; i < 200000; ++i) {
        n = n * 1664525u + 1013904223u;
        const std::uint32_t number = n >> (i % 31);
        for (unsigned int base : {2u, 3u, 5u}) {
            const T value = RnRadicalInverse<T>::of(base, T(1) / static_cast<T>(base), number);
            wrong += bitsOf(value) != bitsOf(plain<T>(base, number)) ? 1 : 0;
        }
    }
    EXPECT_EQ(wrong, 0);
}

TEST(RnVanDerCorput, givesItsFirstPoints)
{
    RnVanDerCorputRng<double> halves;
    for (double expected : {0.5, 0.25, 0.75, 0.125, 0.625})
        EXPECT_EQ(halves(), expected);
    RnVanDerCorputRng<double> thirds(3);
    for (double expected : {1.0 / 3, 2.0 / 3, 1.0 / 9, 4.0 / 9, 7.0 / 9})
        EXPECT_NEAR(thirds(), expected, 1e-15);
    EXPECT_STREQ(halves.getName(), "Van der Corput");
}

TYPED_TEST(RnQuasiTest, vanDerCorputGoesOnFromAnyIndex)
{
    using T = TypeParam;
    RnVanDerCorputRng<T> rng;
    rng.restart(1);
    EXPECT_EQ(rng(), T(0.25));
    EXPECT_EQ(rng(), T(0.75));
    rng.restart();
    EXPECT_EQ(rng(), T(0.5));
    T sample;
    rng.getSample(sample);
    EXPECT_EQ(sample, T(0.25));
    EXPECT_EQ(rng(T(4)), T(3));
    EXPECT_EQ(rng(T(1), T(3)), T(1.25));
}

TYPED_TEST(RnQuasiTest, aDrawOfAHalfFromTwoToFourIsThree)
{
    RnVanDerCorputRng<TypeParam> rng;
    EXPECT_EQ(rng(TypeParam(2), TypeParam(4)), TypeParam(3));
}

TYPED_TEST(RnQuasiTest, restartRepeatsAllOutput)
{
    using T = TypeParam;
    static constexpr unsigned int count = 600;
    // Single draws, then a sequence, then single draws again; from the start and from a later point.
    auto const drawn = [](auto& rng, auto dimensions) {
        constexpr int N = decltype(dimensions)::value;
        std::vector<T> all;
        auto const drawSingle = [&] {
            for (unsigned int i = 0; i < count; ++i) {
                T point[N];
                rng.getSample(point);
                all.insert(all.end(), point, point + N);
            }
        };
        drawSingle();
        Arrays<T, N> arrays(count);
        rng.getSequence(count, arrays.pointers);
        for (std::vector<T> const& values : arrays.values)
            all.insert(all.end(), values.begin(), values.end());
        drawSingle();
        return all;
    };
    auto const expectRepeats = [&drawn](auto& rng, auto dimensions) {
        SCOPED_TRACE(rng.getName());
        const std::vector<T> first = drawn(rng, dimensions);
        rng.restart();
        EXPECT_EQ(drawn(rng, dimensions), first);
        rng.restart(5);
        const std::vector<T> later = drawn(rng, dimensions);
        EXPECT_NE(later, first);
        rng.restart(5);
        EXPECT_EQ(drawn(rng, dimensions), later);
        rng.restart();
        EXPECT_EQ(drawn(rng, dimensions), first);
    };
    RnHaltonMultiRng<T, 2> halton2;
    RnHaltonMultiRng<T, 3> halton3;
    RnHammersleyMultiRng<T, 2> hammersley2(count);
    RnHammersleyMultiRng<T, 3> hammersley3(count);
    RnNiederreiterMultiRng<T> niederreiter;
    expectRepeats(halton2, std::integral_constant<int, 2>());
    expectRepeats(halton3, std::integral_constant<int, 3>());
    expectRepeats(hammersley2, std::integral_constant<int, 2>());
    expectRepeats(hammersley3, std::integral_constant<int, 3>());
    expectRepeats(niederreiter, std::integral_constant<int, 4>());
    RnHaltonBiRng<T> halton;
    RnHammersleyBiRng<T> hammersley(count);
    auto const expectPairsRepeat = [](auto& rng) {
        SCOPED_TRACE(rng.getName());
        std::vector<T> x(count), y(count), again(count);
        rng.restart(7);
        rng.getSequence(count, x.data(), y.data());
        T u, v, w, z;
        rng.getSample(u, v);
        rng.restart(7);
        rng.getSequence(count, again.data(), y.data());
        EXPECT_EQ(again, x);
        rng.getSample(w, z);
        EXPECT_TRUE(u == w && v == z);
    };
    expectPairsRepeat(halton);
    expectPairsRepeat(hammersley);
}

TYPED_TEST(RnQuasiTest, indexWrapsThroughZero)
{
    using T = TypeParam;
    for (unsigned int base : {2u, 3u, 5u, 7u}) {
        RnVanDerCorputRng<T> rng(base);
        rng.restart(4294967295u);
        EXPECT_EQ(rng(), T(0));
        EXPECT_EQ(rng(), T(1) / static_cast<T>(base));
        std::vector<T> samples(600);
        rng.restart(4294967295u - 300);
        rng.getSequence(600, samples.data());
        EXPECT_NE(samples[299], T(0));
        EXPECT_EQ(samples[300], T(0));
        EXPECT_EQ(samples[301], T(1) / static_cast<T>(base));
        EXPECT_EQ(rng(), plain<T>(base, 300));
        for (unsigned int before : {0u, 1u, 599u, 600u}) {
            rng.restart(4294967295u - before);
            rng.getSequence(600, samples.data());
            for (unsigned int i = 0; i < 600; ++i)
                ASSERT_EQ(samples[i], plain<T>(base, i - before)) << before << " " << i;
        }
    }
}

TYPED_TEST(RnQuasiTest, baseChangesInFlight)
{
    using T = TypeParam;
    RnVanDerCorputRng<T> rng;
    rng();
    rng();
    rng.setPrimeNumber(3);
    EXPECT_EQ(rng.getPrimeNumber(), 3u);
    EXPECT_EQ(rng(), plain<T>(3, 3));
}

TYPED_TEST(RnQuasiTest, basesWithoutDigitsGiveZeroAndEnd)
{
    using T = TypeParam;
    for (unsigned int base : {0u, 1u}) {
        RnVanDerCorputRng<T> rng(base);
        EXPECT_EQ(rng(), T(0));
        std::vector<T> samples(100, T(7));
        rng.getSequence(100, samples.data());
        EXPECT_EQ(std::count(samples.begin(), samples.end(), T(0)), 100);
        rng.setPrimeNumber(2);
        EXPECT_EQ(rng(), plain<T>(2, 102));
    }
}

TYPED_TEST(RnQuasiTest, oneDimensionAnswersForTheUnitInterval)
{
    using T = TypeParam;
    const RnVanDerCorputRng<T> rng;
    EXPECT_EQ(rng.getEfficientWidth(), T(1));
    EXPECT_EQ(rng.getEfficientMin(), T(0));
    EXPECT_EQ(rng.getEfficientMax(), T(1));
    EXPECT_EQ(rng.getEfficientFraction(), T(1));
    EXPECT_EQ(rng.getPdf(T(0)), T(1));
    EXPECT_EQ(rng.getPdf(T(1)), T(0));
    EXPECT_EQ(rng.getPdf(std::numeric_limits<T>::quiet_NaN()), T(0));
}

TYPED_TEST(RnQuasiTest, moreDimensionsAnswerForTheUnitBox)
{
    using T = TypeParam;
    RnHaltonMultiRng<T, 2> halton2;
    RnHaltonMultiRng<T, 3> halton3;
    RnHammersleyMultiRng<T, 2> hammersley2(4);
    RnHammersleyMultiRng<T, 3> hammersley3(4);
    RnNiederreiterMultiRng<T> niederreiter;
    expectUnitBox<Vn::RnMultiRng<T, 2>, T, 2>(halton2);
    expectUnitBox<Vn::RnMultiRng<T, 3>, T, 3>(halton3);
    expectUnitBox<Vn::RnMultiRng<T, 2>, T, 2>(hammersley2);
    expectUnitBox<Vn::RnMultiRng<T, 3>, T, 3>(hammersley3);
    expectUnitBox<Vn::RnMultiRng<T, 4>, T, 4>(niederreiter);
    EXPECT_STREQ(halton3.getName(), "Halton");
    EXPECT_STREQ(hammersley3.getName(), "Hammersley");
    EXPECT_STREQ(niederreiter.getName(), "Niederreiter");
}

TYPED_TEST(RnQuasiTest, planarFormsAnswerForTheUnitSquare)
{
    using T = TypeParam;
    RnHaltonBiRng<T> halton;
    RnHammersleyBiRng<T> hammersley(4);
    for (Vn::RnBiRng<T>* rng : {static_cast<Vn::RnBiRng<T>*>(&halton), static_cast<Vn::RnBiRng<T>*>(&hammersley)}) {
        T x, y;
        rng->getEfficientWidth(x, y);
        EXPECT_TRUE(x == T(1) && y == T(1));
        rng->getEfficientMin(x, y);
        EXPECT_TRUE(x == T(0) && y == T(0));
        rng->getEfficientMax(x, y);
        EXPECT_TRUE(x == T(1) && y == T(1));
        EXPECT_EQ(rng->getEfficientFraction(), T(1));
        EXPECT_EQ(rng->getPdf(T(0), T(0.5)), T(1));
        EXPECT_EQ(rng->getPdf(T(0), T(1)), T(0));
        EXPECT_EQ(rng->getPdf(std::numeric_limits<T>::quiet_NaN(), T(0)), T(0));
    }
    EXPECT_STREQ(halton.getName(), "Halton");
    EXPECT_STREQ(hammersley.getName(), "Hammersley");
}

TYPED_TEST(RnQuasiTest, haltonHasAnInverseForEachDimension)
{
    using T = TypeParam;
    RnHaltonMultiRng<T, 3> rng;
    unsigned int primes[3] = {};
    rng.getPrimeNumbers(primes);
    EXPECT_EQ(std::vector<unsigned int>(primes, primes + 3), (std::vector<unsigned int>{2, 3, 5}));
    T point[3];
    rng.getSample(point);
    EXPECT_EQ(point[0], T(0.5));
    EXPECT_EQ(point[1], T(1) / T(3));
    EXPECT_EQ(point[2], T(1) / T(5));
    Arrays<T, 3> arrays(1000);
    rng.getSequence(1000, arrays.pointers);
    rng.restart(1);
    for (unsigned int i = 0; i < 1000; ++i) {
        rng.getSample(point);
        for (unsigned int d = 0; d < 3; ++d)
            ASSERT_EQ(arrays.values[d][i], point[d]);
    }
    rng.getSequence(0, arrays.pointers);
    rng.restart();
    rng.getSample(point);
    EXPECT_EQ(point[0], T(0.5));
}

TYPED_TEST(RnQuasiTest, haltonTakesOtherBasesAndGoesOn)
{
    using T = TypeParam;
    const unsigned int given[2] = {7, 7};  // neither distinct nor, below, prime
    RnHaltonMultiRng<T, 2> rng(given);
    T point[2];
    rng.getSample(point);
    EXPECT_EQ(point[0], plain<T>(7, 1));
    EXPECT_EQ(point[1], point[0]);
    const unsigned int others[2] = {4, 3};
    rng.setPrimeNumbers(others);
    rng.getSample(point);
    EXPECT_EQ(point[0], plain<T>(4, 2));
    EXPECT_EQ(point[1], plain<T>(3, 2));

    RnHaltonBiRng<T> planar(7, 4), usual;
    unsigned int prime0 = 0, prime1 = 0;
    planar.getPrimeNumbers(prime0, prime1);
    EXPECT_TRUE(prime0 == 7 && prime1 == 4);
    usual.getPrimeNumbers(prime0, prime1);
    EXPECT_TRUE(prime0 == 2 && prime1 == 3);
    T x, y;
    planar.getSample(x, y);
    EXPECT_TRUE(x == plain<T>(7, 1) && y == plain<T>(4, 1));
    planar.setPrimeNumbers(3, 2);
    planar.getSample(x, y);
    EXPECT_TRUE(x == plain<T>(3, 2) && y == plain<T>(2, 2));
    planar.restart(9);
    T xs[2], ys[2];
    planar.getSequence(2, xs, ys);
    EXPECT_TRUE(xs[1] == plain<T>(3, 11) && ys[1] == plain<T>(2, 11));
    planar.restart();
    planar.getSample(x, y);
    EXPECT_EQ(x, plain<T>(3, 1));
}

TYPED_TEST(RnQuasiTest, hammersleyRampWrapsAndItsInversesRunOn)
{
    using T = TypeParam;
    RnHammersleyBiRng<T> rng(4);
    const T expected[][2] = {
        {T(0.125), T(0.5)}, {T(0.375), T(0.25)}, {T(0.625), T(0.75)}, {T(0.875), T(0.125)}, {T(0.125), T(0.625)}};
    for (int pass = 0; pass < 2; ++pass) {
        for (auto const& point : expected) {
            T x, y;
            rng.getSample(x, y);
            EXPECT_EQ(x, point[0]);
            EXPECT_EQ(y, point[1]);
        }
        rng.restart();
    }
}

TYPED_TEST(RnQuasiTest, hammersleySequenceStartsAtTheRampsStartWhateverTheIndex)
{
    using T = TypeParam;
    RnHammersleyMultiRng<T, 3> rng(4);
    T point[3];
    rng.getSample(point);  // the ramp stands at 1
    Arrays<T, 3> arrays(4);
    rng.getSequence(3, arrays.pointers);
    for (unsigned int i = 0; i < 3; ++i) {
        EXPECT_EQ(arrays.values[0][i], (static_cast<T>(i) + T(0.5)) / T(4));
        EXPECT_EQ(arrays.values[1][i], plain<T>(2, i + 2));
        EXPECT_EQ(arrays.values[2][i], plain<T>(3, i + 2));
    }
    EXPECT_EQ(arrays.values[0][3], T(-7));
    rng.getSample(point);  // the ramp goes on, and so do the inverses
    EXPECT_EQ(point[0], T(0.375));
    EXPECT_EQ(point[1], plain<T>(2, 5));
    EXPECT_EQ(point[2], plain<T>(3, 5));
}

TYPED_TEST(RnQuasiTest, hammersleySequenceIsAtMostTheLength)
{
    using T = TypeParam;
    RnHammersleyMultiRng<T, 2> rng(4);
    Arrays<T, 2> arrays(5);
    VnTest::expectThrow<Vn::ExInternalError, std::runtime_error>([&] { rng.getSequence(5, arrays.pointers); },
                                                                 "Assertion 'n <= _length' failed.");
    EXPECT_EQ(arrays.values[0][0], T(-7));
    try {
        rng.getSequence(5, arrays.pointers);
    } catch (Vn::ExBase const& failure) {
        EXPECT_STREQ(failure.getFileName(), "src/base/rnhammersleymultirng");
    }
    rng.getSequence(4, arrays.pointers);
    EXPECT_EQ(arrays.values[1][0], T(0.5));  // the refused ones have drawn nothing
    EXPECT_EQ(arrays.values[0][3], T(0.875));
    RnHammersleyBiRng<T> planar(4);
    VnTest::expectThrow<Vn::ExInternalError, std::runtime_error>(
        [&] { planar.getSequence(5, arrays.pointers[0], arrays.pointers[1]); }, "Assertion 'n <= _length' failed.");
}

TYPED_TEST(RnQuasiTest, hammersleyTakesAnyIndexAndAnyLength)
{
    using T = TypeParam;
    RnHammersleyBiRng<T> rng(4);
    T x, y;
    rng.restart(9);
    rng.getSample(x, y);
    EXPECT_EQ(x, T(9.5) / T(4));
    EXPECT_EQ(y, plain<T>(2, 10));
    rng.getSample(x, y);
    EXPECT_EQ(x, T(2.5) / T(4));  // (9 + 1) mod 4
    rng.restart(4294967295u);
    rng.getSample(x, y);
    EXPECT_EQ(y, T(0));
    rng.getSample(x, y);
    EXPECT_EQ(x, T(0.125));
    // Halves beyond the reach of float are formed in double first.
    RnHammersleyBiRng<T> large(4294967295u);
    large.restart(16777217);
    large.getSample(x, y);
    EXPECT_EQ(x, static_cast<T>(16777217.5) / static_cast<T>(4294967295u));

    RnHammersleyBiRng<T> none(0);
    none.getSample(x, y);
    EXPECT_TRUE(std::isinf(x));
    none.getSample(x, y);
    EXPECT_TRUE(std::isinf(x));
    EXPECT_EQ(y, plain<T>(2, 2));
    none.getSequence(0, &x, &y);
}

TYPED_TEST(RnQuasiTest, hammersleyTakesOtherBases)
{
    using T = TypeParam;
    RnHammersleyMultiRng<T, 3> rng(8);
    unsigned int primes[2] = {};
    rng.getPrimeNumbers(primes);
    EXPECT_TRUE(primes[0] == 2 && primes[1] == 3);
    const unsigned int given[2] = {7, 6};
    RnHammersleyMultiRng<T, 3> other(8, given);
    T point[3];
    other.getSample(point);
    EXPECT_EQ(point[1], plain<T>(7, 1));
    EXPECT_EQ(point[2], plain<T>(6, 1));
    rng.getSample(point);
    rng.setPrimeNumbers(given);
    rng.getPrimeNumbers(primes);
    EXPECT_TRUE(primes[0] == 7 && primes[1] == 6);
    rng.getSample(point);
    EXPECT_EQ(point[0], T(1.5) / T(8));
    EXPECT_EQ(point[1], plain<T>(7, 2));
    RnHammersleyBiRng<T> planar(8, 5);
    unsigned int prime = 0;
    planar.getPrimeNumbers(prime);
    EXPECT_EQ(prime, 5u);
    planar.setPrimeNumbers(11);
    planar.getPrimeNumbers(prime);
    EXPECT_EQ(prime, 11u);
    RnHammersleyBiRng<T> usual(8);
    usual.getPrimeNumbers(prime);
    EXPECT_EQ(prime, 2u);
}

TEST(RnNiederreiter, tableIsThatOfThePublishedConstruction)
{
    ASSERT_EQ(std::size(niederreiterRows), 32u);
    for (unsigned int bit = 0; bit < 32; ++bit)
        EXPECT_EQ(Vn::RnNiederreiterTable::rows[bit], niederreiterRows[bit]) << "row " << bit;
}

TYPED_TEST(RnQuasiTest, niederreiterPointsAreTheReckonedOnes)
{
    using T = TypeParam;
    for (PointRow const& row : pointRows) {
        SCOPED_TRACE(row.index);
        RnNiederreiterMultiRng<T> rng;
        rng.restart(row.index);
        T point[4];
        rng.getSample(point);
        Arrays<T, 4> arrays(1);
        rng.restart(row.index);
        rng.getSequence(1, arrays.pointers);
        for (int d = 0; d < 4; ++d) {
            EXPECT_EQ(point[d], static_cast<T>(static_cast<double>(row.point[d]) * 4.656612873077393e-10));
            EXPECT_EQ(arrays.values[d][0], point[d]);
        }
    }
}

TYPED_TEST(RnQuasiTest, niederreiterStartsWithPoint4096)
{
    using T = TypeParam;
    RnNiederreiterMultiRng<T> rng;
    T point[4];
    rng.getSample(point);
    EXPECT_EQ(point[0], T(0.0001220703125));
    for (unsigned int d = 0; d < 4; ++d)
        EXPECT_EQ(point[d], static_cast<T>(niederreiterRows[12][d] * 0x1p-31));
    for (int i = 0; i < 100; ++i)
        rng.getSample(point);
    rng.restart();
    rng.getSample(point);
    EXPECT_EQ(point[0], T(0.0001220703125));
}

TYPED_TEST(RnQuasiTest, niederreiterInBulkIsBitForBitItsRule)
{
    using T = TypeParam;
    auto const expected = [](std::uint32_t index, unsigned int d) {
        const std::uint32_t n = index + 4096;
        std::uint32_t accumulator = 0;
        for (unsigned int bit = 0; bit < 32; ++bit)
            accumulator ^= ((n >> bit) & 1) != 0 ? niederreiterRows[bit][d] : 0;
        return static_cast<T>(static_cast<double>(accumulator) * 4.656612873077393e-10);
    };
    for (unsigned int start : {0u, 1u, 255u, 70000u, 2147479000u, 2147483647u, 4294960000u, 4294967295u}) {
        RnNiederreiterMultiRng<T> rng;
        rng.restart(start);
        std::uint32_t index = start;
        unsigned int wrong = 0;
        for (unsigned int size : {0u, 1u, 3u, 255u, 256u, 257u, 4096u, 7000u}) {
            Arrays<T, 4> arrays(size);
            rng.getSequence(size, arrays.pointers);
            for (unsigned int i = 0; i < size; ++i, ++index)
                for (unsigned int d = 0; d < 4; ++d)
                    wrong += bitsOf(arrays.values[d][i]) != bitsOf(expected(index, d)) ? 1 : 0;
            T point[4];
            rng.getSample(point);
            for (unsigned int d = 0; d < 4; ++d)
                wrong += bitsOf(point[d]) != bitsOf(expected(index, d)) ? 1 : 0;
            ++index;
        }
        EXPECT_EQ(wrong, 0u) << "start " << start;
    }
}

TYPED_TEST(RnQuasiTest, niederreiterSequenceHasTheSinglePointsOfADerivedClass)
{
    using T = TypeParam;
    class Shifted : public RnNiederreiterMultiRng<T>
    {
    public:
        void getSample(T* const sample) override
        {
            RnNiederreiterMultiRng<T>::getSample(sample);
            sample[3] += T(2);
        }
    };
    Shifted shifted;
    RnNiederreiterMultiRng<T> usual;
    Arrays<T, 4> theirs(300), ours(300);
    shifted.getSequence(300, theirs.pointers);
    usual.getSequence(300, ours.pointers);
    for (unsigned int i = 0; i < 300; ++i) {
        EXPECT_EQ(theirs.values[0][i], ours.values[0][i]);
        EXPECT_EQ(theirs.values[3][i], ours.values[3][i] + T(2));
    }
}

TEST(RnNiederreiter, floatCanReachOneAndDoubleCannot)
{
    // 2^31 - 1, the largest accumulator.
    EXPECT_EQ(static_cast<float>(2147483647.0 * 0x1p-31), 1.0f);
    EXPECT_LT(2147483647.0 * 0x1p-31, 1.0);
}

// The lines of use and the examples of edges that the classes' comments show.

TEST(RnVanDerCorput, isUsedAsItsCommentShows)
{
    Vn::RnVanDerCorputRng<double> halves;     // 0.5, 0.25, 0.75, 0.125, 0.625, ...
    Vn::RnVanDerCorputRng<double> thirds(3);  // 1/3, 2/3, 1/9, 4/9, 7/9, ...
    for (double expected : {0.5, 0.25, 0.75, 0.125, 0.625})
        EXPECT_EQ(halves(), expected);
    for (double expected : {1.0 / 3, 2.0 / 3, 1.0 / 9, 4.0 / 9, 7.0 / 9})
        EXPECT_NEAR(thirds(), expected, 1e-15);
    halves.restart();
    EXPECT_EQ(halves(2.0, 4.0), 3.0);
    halves.restart();
    EXPECT_EQ(halves(-8.0), -4.0);
    halves.restart(1);
    EXPECT_EQ(halves(), 0.25);
    halves.restart(4294967295u);
    EXPECT_EQ(halves(), 0.0);
    EXPECT_EQ(halves(), 0.5);
}

TEST(RnHalton, isUsedAsItsCommentShows)
{
    Vn::RnHaltonMultiRng<float, 3> source;
    float point[3];
    source.getSample(point);  // 0.5, 1/3, 0.2
    EXPECT_TRUE(point[0] == 0.5f && point[1] == 1.0f / 3.0f && point[2] == 0.2f);
    source.restart(2);
    source.getSample(point);
    EXPECT_FLOAT_EQ(point[0], 0.75f);
    EXPECT_FLOAT_EQ(point[1], 1.0f / 9.0f);
    EXPECT_FLOAT_EQ(point[2], 0.6f);
    source.restart(4294967295u);
    source.getSample(point);
    EXPECT_TRUE(point[0] == 0.0f && point[1] == 0.0f && point[2] == 0.0f);
    source.getSample(point);
    EXPECT_EQ(point[0], 0.5f);

    RnHaltonBiRng<double> changed;
    double x, y;
    changed.getSample(x, y);
    changed.getSample(x, y);
    changed.setPrimeNumbers(5, 7);
    changed.getSample(x, y);
    EXPECT_NEAR(x, 3.0 / 5, 1e-15);
    EXPECT_NEAR(y, 3.0 / 7, 1e-15);
    RnHaltonBiRng<double> diagonal(2, 2);
    for (int i = 0; i < 20; ++i) {
        diagonal.getSample(x, y);
        EXPECT_EQ(x, y);
    }
}

TEST(RnHammersley, isUsedAsItsCommentShows)
{
    Vn::RnHammersleyMultiRng<double, 2> source(4);
    double point[2];
    source.getSample(point);  // (0.125, 0.5)
    EXPECT_TRUE(point[0] == 0.125 && point[1] == 0.5);
    for (int i = 1; i < 5; ++i)
        source.getSample(point);
    EXPECT_TRUE(point[0] == 0.125 && point[1] == 0.625);
    source.restart(2);
    source.getSample(point);
    EXPECT_TRUE(point[0] == 0.625 && point[1] == 0.75);
    source.restart(5);
    source.getSample(point);
    EXPECT_TRUE(point[0] == 1.375 && point[1] == 0.375);
    source.getSample(point);
    EXPECT_EQ(point[0], 0.625);

    RnHammersleyBiRng<double> pairs(4);
    double x[2], y[2];
    pairs.getSequence(2, x, y);
    pairs.getSequence(2, x, y);
    EXPECT_TRUE(x[0] == 0.125 && y[0] == 0.75);
    RnHammersleyBiRng<double> changed(4);
    for (int i = 0; i < 2; ++i)
        changed.getSample(x[0], y[0]);
    changed.setPrimeNumbers(3);
    changed.getSample(x[0], y[0]);
    EXPECT_EQ(x[0], 0.625);
    EXPECT_NEAR(y[0], 1.0 / 9, 1e-15);
    RnHammersleyBiRng<double> withoutDigits(4, 1);
    withoutDigits.getSample(x[0], y[0]);
    EXPECT_EQ(y[0], 0.0);
    RnHammersleyBiRng<double> empty(0);
    empty.getSample(x[0], y[0]);
    EXPECT_EQ(x[0], std::numeric_limits<double>::infinity());
}

TEST(RnHammersleyBi, isUsedAsItsCommentShows)
{
    float x[256], y[256];
    Vn::RnHammersleyBiRng<float> source(256);
    source.getSequence(256, x, y);  // the whole set
    EXPECT_EQ(x[255], 255.5f / 256);
    EXPECT_EQ(y[255], 0x1p-9f);
}

TEST(RnMulti, isUsedAsItsCommentShows)
{
    Vn::RnHaltonMultiRng<double, 3> source;
    double point[3];
    source.getSample(point);
    EXPECT_EQ(point[0], 0.5);
}

TEST(RnNiederreiter, isUsedAsItsCommentShows)
{
    Vn::RnNiederreiterMultiRng<float> source;
    float point[4];
    source.getSample(point);
    EXPECT_EQ(point[0], 0x1p-13f);
    float zero[] = {0, 0, 0, 0}, edge[] = {0.5f, 0.5f, 0, 1};
    EXPECT_EQ(source.getPdf(zero), 1.0f);
    EXPECT_EQ(source.getPdf(edge), 0.0f);
    RnNiederreiterMultiRng<float> jumped;
    source.getSample(point);
    jumped.restart(1);
    float same[4];
    jumped.getSample(same);
    EXPECT_TRUE(std::equal(point, point + 4, same));
}
