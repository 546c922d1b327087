// Rounding beside the language's library, on numbers of both signs around the size of a picture. Built twice: for the
// baseline of x86-64, and for processors that round with one instruction.

#include "sidebyside.h"

#include <base/floatutil.h>

#include <cmath>
#include <random>
#include <string>
#include <vector>

namespace
{
constexpr std::size_t count = 262144;  ///< more than a branch predictor keeps in mind

template <class Float>
std::vector<Float> const& numbers()
{
    static const std::vector<Float> made = [] {
        std::mt19937 generator(1);
        std::vector<Float> values;
        while (values.size() < count)
            values.push_back((static_cast<Float>(generator()) / Float(4294967296.0) - Float(0.5)) * Float(8000));
        return values;
    }();
    return made;
}

template <class Float, class Function>
void round(benchmark::State& state, Function const& function)
{
    std::vector<Float> const& values = numbers<Float>();
    std::vector<Float> results(count);
    benchmark::DoNotOptimize(results.data());
    for (auto _ : state) {
        for (std::size_t i = 0; i < count; ++i)
            results[i] = function(values[i]);
        benchmark::ClobberMemory();
    }
}

/// Beside what the compiler makes of the standard function, and beside a call of the runtime library's, which the
/// compiler can't see through.
template <class Float, class Ours, class Standard>
void add(VnBench::SideBySide& comparison, std::string const& what, Ours ours, Standard standard,
         Float (*volatile& library)(Float))
{
    auto const timeOurs = [ours](auto& state) { round<Float>(state, ours); };
    comparison.add(what, timeOurs, "std::", [standard](auto& state) { round<Float>(state, standard); });
    comparison.add(what, timeOurs, "call of the library",
                   [&library](auto& state) { round<Float>(state, [&library](Float x) { return library(x); }); });
}

/// The least that the rule takes where the standard function is one instruction: a sum makes 0 of the -0 that it gives
/// above -1, and a maximum returns -0 and not-a-number as they are.
template <class Float>
void addCeilAtLeast(VnBench::SideBySide& comparison, std::string const& what)
{
    comparison.add(
        what, [](auto& state) { round<Float>(state, [](Float x) { return Vn::FloatUtil::ceil(x); }); },
        "floor: std::, sum, maximum",
        [](auto& state) {
            round<Float>(state, [](Float x) {
                const Float whole = std::ceil(x) + Float(0);
                return whole > x ? whole : x;
            });
        });
}

double (*volatile floorCall)(double) = std::floor;
double (*volatile ceilCall)(double) = std::ceil;
double (*volatile roundCall)(double) = std::round;
float (*volatile floorCallFloat)(float) = std::floor;
float (*volatile ceilCallFloat)(float) = std::ceil;
float (*volatile roundCallFloat)(float) = std::round;
}  // namespace

int main(int argc, char** argv)
{
    using Vn::FloatUtil;
    VnBench::SideBySide comparison(count);
    add<double>(
        comparison, "floor, double", [](double x) { return FloatUtil::floor(x); },
        [](double x) { return std::floor(x); }, floorCall);
    add<double>(
        comparison, "ceil, double", [](double x) { return FloatUtil::ceil(x); },
        [](double x) { return std::ceil(x); }, ceilCall);
    addCeilAtLeast<double>(comparison, "ceil, double");
    add<double>(
        comparison, "round, double", [](double x) { return FloatUtil::round(x); },
        [](double x) { return std::round(x); }, roundCall);
    add<float>(
        comparison, "floor, float", [](float x) { return FloatUtil::floor(x); },
        [](float x) { return std::floor(x); }, floorCallFloat);
    add<float>(
        comparison, "ceil, float", [](float x) { return FloatUtil::ceil(x); }, [](float x) { return std::ceil(x); },
        ceilCallFloat);
    addCeilAtLeast<float>(comparison, "ceil, float");
    add<float>(
        comparison, "round, float", [](float x) { return FloatUtil::round(x); },
        [](float x) { return std::round(x); }, roundCallFloat);
    return comparison.run(argc, argv);
}
