// Rates and stream times beside what a user would take instead: boost::rational, std::chrono with fixed rates, and a
// rescale by hand in 128 bits.

#include "sidebyside.h"

#include <base/dttime.h>

#include <boost/rational.hpp>

#include <chrono>
#include <cstdint>
#include <ratio>
#include <string>
#include <utility>
#include <vector>

namespace
{
using Fraction = boost::rational<std::int64_t>;

constexpr std::size_t count = 16384;  ///< operands; the branches that 4,096 take, a predictor has by heart

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

using Term = int (*)();

/// Fractions of two terms, times a common divisor.
std::vector<Terms> termsOf(Term term, int largestDivisor)
{
    std::vector<Terms> made;
    while (made.size() < count) {
        const int divisor = static_cast<int>(1 + nextBits() % static_cast<unsigned>(largestDivisor));
        const int numerator = term() * divisor;
        made.push_back({numerator, term() * divisor});
    }
    return made;
}

template <unsigned limit>
int upTo()
{
    return static_cast<int>(1 + nextBits() % limit);
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

/// Times `call(i)` for each operand in turn, results into memory as a program would have them.
template <class Call>
void timeEach(benchmark::State& state, Call const& call)
{
    std::vector<decltype(call(std::size_t()))> results(count);
    benchmark::DoNotOptimize(results.data());
    for (auto _ : state) {
        for (std::size_t i = 0; i < count; ++i)
            results[i] = call(i);
        benchmark::ClobberMemory();
    }
}

template <class Number>
void normalise(benchmark::State& state, std::vector<Terms> const& terms)
{
    timeEach(state, [&](std::size_t i) { return Number(terms[i].numerator, terms[i].denominator); });
}

template <class Number>
void compare(benchmark::State& state, std::vector<Terms> const& terms)
{
    const std::vector<Number> numbers = numbersOf<Number>(terms);
    timeEach(state, [&](std::size_t i) -> int { return numbers[i] < numbers[(i + 1) % count]; });
}

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
    std::vector<std::int64_t> const& values = counts();
    timeEach(state, [&](std::size_t i) -> std::int64_t {
        return Vn::DtTimeIndex(values[i]).convert(rates[i], rates[(i + 1) % count], std::round_toward_zero);
    });
}

void convertByHand(benchmark::State& state)
{
    std::vector<Terms> const& rates = usualTerms();
    std::vector<std::int64_t> const& values = counts();
    timeEach(state, [&](std::size_t i) { return rescaled(values[i], rates[i], rates[(i + 1) % count]); });
}

void addOurs(benchmark::State& state)
{
    std::vector<Vn::DtTime> times;
    for (std::size_t i = 0; i < count; ++i)
        times.emplace_back(counts()[i], usualTerms()[i].numerator, usualTerms()[i].denominator);
    timeEach(state, [&](std::size_t i) {
        Vn::DtTime sum = times[i];
        sum += times[(i + 1) % count];
        return sum;
    });
}

// The compiler knows the rates of these.
using Frames = std::chrono::duration<std::int64_t, std::ratio<1001, 30000>>;
using Samples = std::chrono::duration<std::int64_t, std::ratio<1, 48000>>;

void compareTimesOurs(benchmark::State& state)
{
    const Vn::Rational frames(30000, 1001), samples(48000, 1);
    std::vector<std::int64_t> const& values = counts();
    timeEach(state, [&](std::size_t i) -> int {
        return Vn::DtTime(values[i], frames) < Vn::DtTime(values[(i + 1) % count], samples);
    });
}

void compareTimesChrono(benchmark::State& state)
{
    std::vector<std::int64_t> const& values = counts();
    timeEach(state, [&](std::size_t i) -> int { return Frames(values[i]) < Samples(values[(i + 1) % count]); });
}

void convertTimesOurs(benchmark::State& state)
{
    const Vn::Rational frames(30000, 1001), samples(48000, 1);
    std::vector<std::int64_t> const& values = counts();
    timeEach(state, [&](std::size_t i) -> std::int64_t {
        return Vn::DtTimeIndex(values[i]).convert(frames, samples, std::round_toward_zero);
    });
}

void convertTimesChrono(benchmark::State& state)
{
    std::vector<std::int64_t> const& values = counts();
    timeEach(state, [&](std::size_t i) { return std::chrono::duration_cast<Samples>(Frames(values[i])).count(); });
}
}  // namespace

int main(int argc, char** argv)
{
    const std::pair<char const*, std::vector<Terms>> operands[] = {
        {"31-bit fractions", termsOf(upTo<2147483647>, 1)},
        {"31 bits, reducible", termsOf(upTo<2000000>, 1000)},
        {"up to 1000/1000", termsOf(upTo<1000>, 1)},
        {"rates of streams", usualTerms()},
    };
    constexpr char const* peer = "boost::rational<int64_t>";
    VnBench::SideBySide comparison(count);
    for (auto const& pair : operands) {
        std::vector<Terms> const& terms = pair.second;
        comparison.add(
            std::string("normalise ") + pair.first, [&terms](auto& s) { normalise<Vn::Rational>(s, terms); }, peer,
            [&terms](auto& s) { normalise<Fraction>(s, terms); });
        comparison.add(
            std::string("compare ") + pair.first, [&terms](auto& s) { compare<Vn::Rational>(s, terms); }, peer,
            [&terms](auto& s) { compare<Fraction>(s, terms); });
    }
    comparison.add("convert toward zero", convertOurs, "128-bit rescale", convertByHand);
    comparison.add("+= at two rates", addOurs, "128-bit rescale", convertByHand);
    comparison.add("compare times", compareTimesOurs, "std::chrono, fixed rates", compareTimesChrono);
    comparison.add("convert times", convertTimesOurs, "std::chrono, fixed rates", convertTimesChrono);
    return comparison.run(argc, argv);
}
