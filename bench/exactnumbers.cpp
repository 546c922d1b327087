// Rates and stream times beside what a user would take instead: boost::rational, std::chrono with fixed rates, and a
// rescale by hand in 128 bits.

#include "sidebyside.h"

#include <base/dttime.h>

#include <boost/rational.hpp>

#include <chrono>
#include <cstdint>
#include <ratio>
#include <vector>

namespace
{
using Fraction = boost::rational<std::int64_t>;

constexpr std::size_t count = 1024;

struct Terms
{
    int numerator, denominator;
};

/// Splitmix64: the same operands in every run.
std::uint64_t nextBits()
{
    static std::uint64_t state = 1;
    std::uint64_t z = state += 0x9E3779B97F4A7C15;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
    return z ^ (z >> 31);
}

/// Fractions of 31 bits with a common divisor now and then, as products of rates have.
std::vector<Terms> const& wideTerms()
{
    static const std::vector<Terms> terms = [] {
        std::vector<Terms> made;
        while (made.size() < count) {
            const int common = 1 + static_cast<int>(nextBits() % 1000);
            const int numerator = 1 + static_cast<int>(nextBits() % 2000000);
            const int denominator = 1 + static_cast<int>(nextBits() % 2000000);
            made.push_back({numerator * common, denominator * common});
        }
        return made;
    }();
    return terms;
}

/// Rates as streams have them.
std::vector<Terms> const& usualTerms()
{
    static const std::vector<Terms> terms = [] {
        const Terms rates[] = {{24000, 1001}, {24, 1},    {25, 1},    {30000, 1001}, {30, 1},    {50, 1},
                               {60000, 1001}, {44100, 1}, {48000, 1}, {96000, 1},    {90000, 1}, {1000, 1}};
        std::vector<Terms> made;
        while (made.size() < count)
            made.push_back(rates[nextBits() % std::size(rates)]);
        return made;
    }();
    return terms;
}

template <class Number>
std::vector<Number> numbersOf(std::vector<Terms> const& terms)
{
    std::vector<Number> numbers;
    for (Terms const& pair : terms)
        numbers.emplace_back(pair.numerator, pair.denominator);
    return numbers;
}

std::vector<std::int64_t> const& counts()
{
    static const std::vector<std::int64_t> made = [] {
        std::vector<std::int64_t> numbers;
        while (numbers.size() < count)
            numbers.push_back(static_cast<std::int64_t>(nextBits() % 3000000000));
        return numbers;
    }();
    return made;
}

// ---- normalising

template <class Number>
void normalise(benchmark::State& state, std::vector<Terms> const& terms)
{
    std::size_t i = 0;
    for (auto _ : state) {
        Terms const& pair = terms[i++ % count];
        Number number(pair.numerator, pair.denominator);
        benchmark::DoNotOptimize(number);
    }
}

// ---- comparing

template <class Number>
void compare(benchmark::State& state, std::vector<Terms> const& terms)
{
    const std::vector<Number> numbers = numbersOf<Number>(terms);
    std::size_t i = 0;
    for (auto _ : state) {
        bool isBelow = numbers[i % count] < numbers[(i + 1) % count];
        benchmark::DoNotOptimize(isBelow);
        ++i;
    }
}

// ---- converting

__extension__ using Wide = __int128;

/// What is written by hand for a count of one rate at another.
std::int64_t rescaled(std::int64_t value, Terms const& from, Terms const& to)
{
    const std::int64_t multiplier = static_cast<std::int64_t>(from.denominator) * to.numerator;
    const std::int64_t divisor = static_cast<std::int64_t>(from.numerator) * to.denominator;
    return static_cast<std::int64_t>(static_cast<Wide>(value) * multiplier / divisor);
}

void convertOurs(benchmark::State& state)
{
    const std::vector<Vn::Rational> rates = numbersOf<Vn::Rational>(usualTerms());
    std::size_t i = 0;
    for (auto _ : state) {
        std::int64_t result = Vn::DtTimeIndex(counts()[i % count])
                                  .convert(rates[i % count], rates[(i + 1) % count], std::round_toward_zero);
        benchmark::DoNotOptimize(result);
        ++i;
    }
}

void convertByHand(benchmark::State& state)
{
    std::vector<Terms> const& rates = usualTerms();
    std::size_t i = 0;
    for (auto _ : state) {
        std::int64_t result = rescaled(counts()[i % count], rates[i % count], rates[(i + 1) % count]);
        benchmark::DoNotOptimize(result);
        ++i;
    }
}

// ---- adding times of two rates

void addOurs(benchmark::State& state)
{
    std::vector<Vn::DtTime> times;
    for (std::size_t i = 0; i < count; ++i)
        times.emplace_back(counts()[i], usualTerms()[i].numerator, usualTerms()[i].denominator);
    std::size_t i = 0;
    for (auto _ : state) {
        Vn::DtTime sum = times[i % count];
        sum += times[(i + 1) % count];
        benchmark::DoNotOptimize(sum);
        ++i;
    }
}

// ---- times at fixed rates: the rates are known to the compiler on the other side

using Frames = std::chrono::duration<std::int64_t, std::ratio<1001, 30000>>;
using Samples = std::chrono::duration<std::int64_t, std::ratio<1, 48000>>;

void compareTimesOurs(benchmark::State& state)
{
    const Vn::Rational frames(30000, 1001), samples(48000, 1);
    std::size_t i = 0;
    for (auto _ : state) {
        bool isBelow = Vn::DtTime(counts()[i % count], frames) < Vn::DtTime(counts()[(i + 1) % count], samples);
        benchmark::DoNotOptimize(isBelow);
        ++i;
    }
}

void compareTimesChrono(benchmark::State& state)
{
    std::size_t i = 0;
    for (auto _ : state) {
        bool isBelow = Frames(counts()[i % count]) < Samples(counts()[(i + 1) % count]);
        benchmark::DoNotOptimize(isBelow);
        ++i;
    }
}

void convertTimesOurs(benchmark::State& state)
{
    const Vn::Rational frames(30000, 1001), samples(48000, 1);
    std::size_t i = 0;
    for (auto _ : state) {
        std::int64_t result =
            Vn::DtTimeIndex(counts()[i++ % count]).convert(frames, samples, std::round_toward_zero);
        benchmark::DoNotOptimize(result);
    }
}

void convertTimesChrono(benchmark::State& state)
{
    std::size_t i = 0;
    for (auto _ : state) {
        std::int64_t result = std::chrono::duration_cast<Samples>(Frames(counts()[i++ % count])).count();
        benchmark::DoNotOptimize(result);
    }
}
}  // namespace

int main(int argc, char** argv)
{
    VnBench::SideBySide comparison;
    comparison.add(
        "normalise a wide fraction", [](auto& s) { normalise<Vn::Rational>(s, wideTerms()); },
        "boost::rational<int64_t>", [](auto& s) { normalise<Fraction>(s, wideTerms()); });
    comparison.add(
        "normalise a usual rate", [](auto& s) { normalise<Vn::Rational>(s, usualTerms()); },
        "boost::rational<int64_t>", [](auto& s) { normalise<Fraction>(s, usualTerms()); });
    comparison.add(
        "compare wide fractions", [](auto& s) { compare<Vn::Rational>(s, wideTerms()); },
        "boost::rational<int64_t>", [](auto& s) { compare<Fraction>(s, wideTerms()); });
    comparison.add(
        "compare usual rates", [](auto& s) { compare<Vn::Rational>(s, usualTerms()); }, "boost::rational<int64_t>",
        [](auto& s) { compare<Fraction>(s, usualTerms()); });
    comparison.add("convert toward zero", convertOurs, "128-bit rescale", convertByHand);
    comparison.add("+= at two rates", addOurs, "128-bit rescale", convertByHand);
    comparison.add("compare times", compareTimesOurs, "std::chrono, fixed rates", compareTimesChrono);
    comparison.add("convert times", convertTimesOurs, "std::chrono, fixed rates", convertTimesChrono);
    return comparison.run(argc, argv);
}
