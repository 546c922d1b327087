#include "expectthrow.h"

#include <base/exinternalerror.h>
#include <base/rnlecuyeruniformrng.h>
#include <base/rnlecuyerword_p.h>
#include <base/rnnumrecstate_p.h>
#include <base/rnnumrecuniformrng.h>
#include <base/rnstduniformrng.h>

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>
#include <type_traits>
#include <vector>

using Vn::RnLecuyerUniformRng;
using Vn::RnLecuyerWord1;
using Vn::RnLecuyerWord2;
using Vn::RnNumRecState;
using Vn::RnNumRecUniformRng;
using Vn::RnRng;
using Vn::RnStdUniformRng;

namespace
{
struct LecuyerRow
{
    unsigned int seed2, step;
    std::uint32_t single;
    std::uint64_t twice;
};

constexpr LecuyerRow lecuyerRows[] = {
#include "../reference/lecuyer.inc"
};

struct ShuffledRow
{
    unsigned int seed, step, value;
};

constexpr ShuffledRow shuffledRows[] = {
#include "../reference/shuffled.inc"
};

std::uint32_t bitsOf(float value)
{
    return std::bit_cast<std::uint32_t>(value);
}

std::uint64_t bitsOf(double value)
{
    return std::bit_cast<std::uint64_t>(value);
}

/// One draw of the combined generator by its rule, with both quotients.
template <class T>
class PlainLecuyer
{
public:
    explicit PlainLecuyer(unsigned int seed2) : _s1(static_cast<std::int32_t>(seed2)), _s2(55555) {}

    T draw()
    {
        std::int32_t k = _s1 / 53668;
        _s1 = 40014 * (_s1 - k * 53668) - k * 12211;
        if (_s1 < 0)
            _s1 += 2147483563;
        k = _s2 / 52774;
        _s2 = 40692 * (_s2 - k * 52774) - k * 3791;
        if (_s2 < 0)
            _s2 += 2147483399;
        std::int32_t z = static_cast<std::int32_t>(static_cast<std::uint32_t>(_s1) +
                                                   static_cast<std::uint32_t>(_s2) - 2147483563u);
        if (z < 1)
            z += 2147483562;
        return static_cast<T>(z) * (sizeof(T) == 4 ? T(4.656613e-10f) : T(4.656613057391769e-10));
    }

private:
    std::int32_t _s1, _s2;
};

/// One draw behind the shuffle table by its rule, the slot from the last output.
template <class T>
class PlainShuffled
{
public:
    explicit PlainShuffled(unsigned int seed) : _state((seed + 374441) % 1771875)
    {
        for (std::uint32_t& slot : _table)
            slot = next();
        _last = static_cast<T>(next()) * RnNumRecUniformRng<T>::RM;
    }

    T draw()
    {
        const unsigned int j = static_cast<unsigned int>(_last * T(97));
        EXPECT_LT(j, 97u);
        _last = static_cast<T>(_table[j]) * RnNumRecUniformRng<T>::RM;
        _table[j] = next();
        return _last;
    }

private:
    std::uint32_t next() { return _state = (_state * 2416 + 374441) % 1771875; }

    std::uint32_t _state;
    std::uint32_t _table[97];
    T _last;
};

/// Long runs in pieces of many sizes, single draws in between, against a plain generator.
template <class T, class Plain>
void expectSameStream(RnRng<T>& rng, Plain& plain)
{
    std::vector<T> samples(5000);
    const unsigned int sizes[] = {0, 1, 63, 64, 2, 65, 79, 80, 81, 127, 128, 3, 4096, 15, 16, 17, 1000, 4999};
    unsigned int wrong = 0;
    for (int round = 0; round < 6; ++round) {
        for (unsigned int size : sizes) {
            rng.getSequence(size, samples.data());
            for (unsigned int i = 0; i < size; ++i)
                wrong += bitsOf(samples[i]) != bitsOf(plain.draw()) ? 1 : 0;
            wrong += bitsOf(rng()) != bitsOf(plain.draw()) ? 1 : 0;
            T sample;
            rng.getSample(sample);
            wrong += bitsOf(sample) != bitsOf(plain.draw()) ? 1 : 0;
        }
    }
    EXPECT_EQ(wrong, 0u);
}

template <class T>
class RnUniformTest : public testing::Test
{
protected:
    /// One of each, with its name.
    static std::vector<std::pair<std::unique_ptr<RnRng<T>>, std::string>> all()
    {
        std::vector<std::pair<std::unique_ptr<RnRng<T>>, std::string>> made;
        made.emplace_back(std::make_unique<RnLecuyerUniformRng<T>>(), "Lecuyer");
        made.emplace_back(std::make_unique<RnNumRecUniformRng<T>>(), "Numerical Recipes RAN2");
        made.emplace_back(std::make_unique<RnStdUniformRng<T>>(1), "Std OS-specific generator");
        return made;
    }
};

using Types = testing::Types<float, double>;
}  // namespace

static_assert(!std::is_copy_constructible_v<RnLecuyerUniformRng<float>>);
static_assert(!std::is_copy_assignable_v<RnNumRecUniformRng<double>>);

TYPED_TEST_SUITE(RnUniformTest, Types);

TYPED_TEST(RnUniformTest, allAnswerAlikeForTheUnitInterval)
{
    using T = TypeParam;
    const T below = std::nextafter(T(1), T(0));
    for (auto const& [rng, name] : TestFixture::all()) {
        SCOPED_TRACE(name);
        EXPECT_EQ(rng->getName(), name);
        EXPECT_EQ(rng->getEfficientWidth(), T(1));
        EXPECT_EQ(rng->getEfficientMin(), T(0));
        EXPECT_EQ(rng->getEfficientMax(), T(1));
        EXPECT_EQ(rng->getEfficientFraction(), T(1));
        EXPECT_EQ(rng->getPdf(T(0)), T(1));
        EXPECT_EQ(rng->getPdf(T(-0.0)), T(1));
        EXPECT_EQ(rng->getPdf(below), T(1));
        EXPECT_EQ(rng->getPdf(T(1)), T(0));
        EXPECT_EQ(rng->getPdf(-std::numeric_limits<T>::denorm_min()), T(0));
        EXPECT_EQ(rng->getPdf(std::numeric_limits<T>::quiet_NaN()), T(0));
    }
}

TYPED_TEST(RnUniformTest, anEmptySequenceTouchesNothing)
{
    using T = TypeParam;
    for (auto const& [rng, name] : TestFixture::all()) {
        SCOPED_TRACE(name);
        T untouched = T(7);
        rng->getSequence(0, &untouched);
        EXPECT_EQ(untouched, T(7));
        rng->getSequence(0, nullptr);
    }
}

TYPED_TEST(RnUniformTest, lecuyerGivesTheReckonedNumbers)
{
    using T = TypeParam;
    std::unique_ptr<RnLecuyerUniformRng<T>> rng;
    unsigned int step = 0, wrong = 0;
    for (LecuyerRow const& row : lecuyerRows) {
        if (row.step == 1) {
            rng = std::make_unique<RnLecuyerUniformRng<T>>(1, row.seed2);
            step = 0;
        }
        T value = T(0);
        for (; step < row.step; ++step)
            value = rng->eval();
        if constexpr (sizeof(T) == 4)
            wrong += bitsOf(value) != row.single ? 1 : 0;
        else
            wrong += bitsOf(value) != row.twice ? 1 : 0;
    }
    EXPECT_EQ(wrong, 0u);
}

TYPED_TEST(RnUniformTest, lecuyerInBulkIsBitForBitItsRule)
{
    using T = TypeParam;
    for (unsigned int seed2 : {99999u, 0u, 1u, 2147483562u, 2147483563u, 2147483647u, 2147483648u, 4294967295u}) {
        SCOPED_TRACE(seed2);
        RnLecuyerUniformRng<T> rng(5, seed2);
        PlainLecuyer<T> plain(seed2);
        expectSameStream(rng, plain);
    }
}

TYPED_TEST(RnUniformTest, lecuyerStartsFromTheDefaultSeeds)
{
    using T = TypeParam;
    RnLecuyerUniformRng<T> none, one(55555), both(55555, 99999);
    for (int i = 0; i < 10; ++i) {
        const T expected = both();
        EXPECT_EQ(none(), expected);
        EXPECT_EQ(one(), expected);
    }
}

TYPED_TEST(RnUniformTest, lecuyerDoesNotReadItsFirstSeed)
{
    using T = TypeParam;
    RnLecuyerUniformRng<T> left(1, 17), right(99, 17);
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(left(), right());
    left.restart(2, 18);
    right.restart(98, 18);
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(left(), right());
}

TYPED_TEST(RnUniformTest, lecuyerRestartLeavesTheSecondWord)
{
    using T = TypeParam;
    for (bool isReseeded : {false, true}) {
        RnLecuyerUniformRng<T> rng(1, 17);
        const T first = rng();
        if (isReseeded)
            rng.restart(3, 17);
        else
            rng.restart();
        const T again = rng();
        EXPECT_NE(again, first);
        // The first word once more from the seed, the second at its second step.
        std::int32_t second = RnLecuyerWord2::next(RnLecuyerWord2::next(55555));
        const std::int32_t z = Vn::combineLecuyerWords(RnLecuyerWord1::next(17), second);
        EXPECT_EQ(again, static_cast<T>(z) * (sizeof(T) == 4 ? T(0x1p-31) : T(4.656613057391769e-10)));
    }
}

TEST(RnLecuyer, aWordOfZeroStaysZero)
{
    EXPECT_EQ(RnLecuyerWord2::next(0), 0);
    EXPECT_EQ(RnLecuyerWord1::next(0), 0);
    EXPECT_EQ(RnLecuyerWord2::skip<16>(0), 0);
    // What is left is the first word alone: less its modulus, and brought to 1 and above.
    EXPECT_EQ(Vn::combineLecuyerWords(5, 0), 4);
    EXPECT_EQ(Vn::combineLecuyerWords(2147483562, 0), 2147483561);
}

TEST(RnLecuyer, wordsAreSteppedWithoutDivisionAsWithIt)
{
    auto const plain = [](std::int64_t s, std::int64_t a, std::int64_t m) {
        const std::int64_t next = s * a % m;
        return static_cast<std::int32_t>(next < 0 ? next + m : next);
    };
    std::vector<std::int32_t> states = {
        0,          1,          -1,         2,          53667,      53668,           52773,       52774,
        2147483398, 2147483399, 2147483562, 2147483563, 2147483647, -2147483647 - 1, -2147483563, -2147483562};
    std::int32_t state = 12345;
    for (int i = 0; i < 100000; ++i)
        states.push_back(state =
                             static_cast<std::int32_t>(static_cast<std::uint32_t>(state) * 1664525u + 1013904223u));
    int wrong = 0;
    for (std::int32_t s : states) {
        wrong += RnLecuyerWord1::next(s) != plain(s, 40014, 2147483563) ? 1 : 0;
        wrong += RnLecuyerWord2::next(s) != plain(s, 40692, 2147483399) ? 1 : 0;
        std::int32_t one = RnLecuyerWord1::next(s), two = RnLecuyerWord2::next(s);
        const std::int32_t skippedOne = RnLecuyerWord1::skip<16>(one), skippedTwo = RnLecuyerWord2::skip<16>(two);
        for (int step = 0; step < 16; ++step) {
            one = RnLecuyerWord1::next(one);
            two = RnLecuyerWord2::next(two);
        }
        wrong += skippedOne != one || skippedTwo != two ? 1 : 0;
    }
    EXPECT_EQ(wrong, 0);
}

TEST(RnLecuyer, largestOutcomeStaysBelowOne)
{
    // The words' sum less the modulus is 0 at most where 2147483562 is added, and otherwise smaller than that.
    const std::int32_t largest = 2147483562;
    EXPECT_EQ(Vn::combineLecuyerWords(2147483562, 1), largest);
    EXPECT_EQ(static_cast<float>(largest) * 0x1p-31f, std::nextafter(1.0f, 0.0f));
    EXPECT_LT(largest * 4.656613057391769e-10, 1.0);
}

TYPED_TEST(RnUniformTest, drawsAreScaled)
{
    using T = TypeParam;
    RnLecuyerUniformRng<T> lecuyer, sameLecuyer;
    RnNumRecUniformRng<T> shuffled, sameShuffled;
    for (int i = 0; i < 50; ++i) {
        const T a = sameLecuyer(), b = sameLecuyer(), c = sameShuffled(), d = sameShuffled();
        EXPECT_EQ(lecuyer(T(3)), a * T(3));
        EXPECT_EQ(lecuyer(T(2), T(4)), b * (T(4) - T(2)) + T(2));
        EXPECT_EQ(shuffled(T(3)), c * T(3));
        EXPECT_EQ(shuffled(T(-1), T(4)), d * (T(4) - T(-1)) + T(-1));
    }
}

TYPED_TEST(RnUniformTest, shuffledGivesTheReckonedNumbers)
{
    using T = TypeParam;
    std::unique_ptr<RnNumRecUniformRng<T>> rng;
    unsigned int step = 0, wrong = 0;
    for (ShuffledRow const& row : shuffledRows) {
        if (row.step == 1) {
            rng = std::make_unique<RnNumRecUniformRng<T>>(row.seed);
            step = 0;
        }
        T value = T(0);
        for (; step < row.step; ++step)
            value = rng->eval();
        wrong += bitsOf(value) != bitsOf(static_cast<T>(row.value) * RnNumRecUniformRng<T>::RM) ? 1 : 0;
    }
    EXPECT_EQ(wrong, 0u);
}

TYPED_TEST(RnUniformTest, shuffledInBulkIsBitForBitItsRule)
{
    using T = TypeParam;
    for (unsigned int seed : {0u, 1u, 1771874u, 4294592855u, 4294967295u}) {
        SCOPED_TRACE(seed);
        RnNumRecUniformRng<T> rng(seed);
        PlainShuffled<T> plain(seed);
        expectSameStream(rng, plain);
    }
}

TYPED_TEST(RnUniformTest, shuffledRepeatsAfterARestart)
{
    using T = TypeParam;
    RnNumRecUniformRng<T> rng(7), same(7), fresh(8);
    std::vector<T> first(1000), again(1000);
    rng.getSequence(1000, first.data());
    same.getSequence(1000, again.data());
    EXPECT_EQ(first, again);
    rng.restart();
    rng.getSequence(1000, again.data());
    EXPECT_EQ(first, again);
    rng.restart(8);
    EXPECT_EQ(rng(), fresh());
    rng.restart();
    fresh.restart();
    EXPECT_EQ(rng(), fresh());
}

TYPED_TEST(RnUniformTest, shuffledStaysBelowOne)
{
    EXPECT_LT(static_cast<TypeParam>(1771874) * RnNumRecUniformRng<TypeParam>::RM, TypeParam(1));
}

TEST(RnNumRec, hasItsConstants)
{
    EXPECT_EQ(bitsOf(RnNumRecUniformRng<float>::RM), 0x35177F7Bu);
    EXPECT_EQ(RnNumRecUniformRng<double>::RM, 5.64373897707231e-07);
    EXPECT_EQ(RnNumRecState::next(374441), (374441ull * 2416 + 374441) % 1771875);
    // With seed 0 the state is 374441 before the table is filled: so the 98th state makes the first slot.
    std::uint32_t state = 374441;
    std::uint32_t table[97];
    for (std::uint32_t& slot : table)
        slot = state = RnNumRecState::next(state);
    state = RnNumRecState::next(state);
    RnNumRecUniformRng<double> rng(0);
    EXPECT_EQ(rng(), table[state * 97ull / 1771875] * RnNumRecUniformRng<double>::RM);
}

TEST(RnNumRec, slotFromIntegersIsTheOneFromOutputsForAllValues)
{
    unsigned int wrong = 0;
    for (std::uint32_t value = 0; value < 1771875; ++value) {
        const std::uint32_t slot = RnNumRecState::slotOf(value);
        wrong += slot != RnNumRecState::slotOfOutput(static_cast<float>(value) * RnNumRecUniformRng<float>::RM) ||
                         slot != RnNumRecState::slotOfOutput(value * RnNumRecUniformRng<double>::RM)
                     ? 1
                     : 0;
    }
    EXPECT_EQ(wrong, 0u);
}

TEST(RnNumRec, aSlotBeyondTheTableIsRefused)
{
    EXPECT_EQ(RnNumRecState::slotOfOutput(std::nextafter(1.0f, 0.0f)), 96u);
    VnTest::expectThrow<Vn::ExInternalError, std::runtime_error>([] { RnNumRecState::slotOfOutput(1.0f); },
                                                                 "Assertion 'j < SHUFFLESIZE' failed.");
    try {
        RnNumRecState::slotOfOutput(1.0);
    } catch (Vn::ExBase const& failure) {
        EXPECT_STREQ(failure.getFileName(), "src/base/rnnumrecuniformrng");
    }
}

TYPED_TEST(RnUniformTest, systemsNumbersAreThoseOfRand)
{
    using T = TypeParam;
    const T scale = T(1) / static_cast<T>(RAND_MAX);
    if (RAND_MAX == 32767) {
        EXPECT_EQ(scale, sizeof(T) == 4 ? T(3.051851e-5f) : T(3.051850947599719e-5));
    }
    RnStdUniformRng<T> rng(42);
    std::vector<T> drawn(6);
    drawn[0] = rng();
    rng.getSample(drawn[1]);
    rng.getSequence(2, &drawn[2]);
    drawn[4] = rng(T(3));
    drawn[5] = rng(T(2), T(4));
    std::srand(42);
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(drawn[static_cast<std::size_t>(i)], static_cast<T>(std::rand()) * scale);
    EXPECT_EQ(drawn[4], static_cast<T>(std::rand()) * scale * T(3));
    EXPECT_EQ(drawn[5], static_cast<T>(std::rand()) * scale * T(2) + T(2));
    EXPECT_EQ(static_cast<T>(RAND_MAX) * scale, T(1));  // 1 is drawn
}

TYPED_TEST(RnUniformTest, systemsStateIsTheProcesss)
{
    using T = TypeParam;
    RnStdUniformRng<T> one(5);
    const T first = one(), second = one(), third = one();
    std::srand(5);
    RnStdUniformRng<T> other;  // leaves the state alone
    EXPECT_EQ(other(), first);
    EXPECT_EQ(one(), second);
    EXPECT_EQ(other(), third);
    one.restart();
    EXPECT_EQ(other(), first);
    // A default-built one restarts with the seed of a process that sets none.
    other.restart();
    const T afterRestart = one();
    std::srand(1);
    EXPECT_EQ(one(), afterRestart);
}

// The lines of use and the examples of edges that the classes' comments show.

TEST(RnLecuyer, isUsedAsItsCommentShows)
{
    Vn::RnLecuyerUniformRng<double> uniform(1, 2);
    const double number = uniform(-1.0, 1.0);  // between -1 and 1
    EXPECT_TRUE(number > -1.0 && number < 1.0);
    RnLecuyerUniformRng<double> one(1, 2), seven(7, 2), restarted(1, 2);
    const double first = restarted();
    restarted.restart();
    EXPECT_EQ(one(), first);
    EXPECT_EQ(seven(), first);
    EXPECT_NE(restarted(), first);
}

TEST(RnNumRec, isUsedAsItsCommentShows)
{
    Vn::RnNumRecUniformRng<float> uniform(7);
    const float first = uniform();  // below 1
    uniform.restart();              // uniform() gives `first` again
    EXPECT_LT(first, 1.0f);
    EXPECT_EQ(uniform(), first);
    EXPECT_EQ(RnNumRecUniformRng<float>(1771882)(), first);
    uniform.restart(8);
    EXPECT_EQ(uniform(), RnNumRecUniformRng<float>(8)());
}

TEST(RnStd, isUsedAsItsCommentShows)
{
    Vn::RnStdUniformRng<double> uniform(1);
    const double number = uniform();  // a multiple of 1 / RAND_MAX
    EXPECT_NEAR(number * RAND_MAX, std::round(number * RAND_MAX), 1e-6);
}
