// Rounding beside the language's library, on numbers of both signs around the size of a picture.

#include "sidebyside.h"

#include <base/floatutil.h>

#include <cmath>
#include <random>
#include <vector>

namespace
{
constexpr std::size_t count = 1024;

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

template <class Float, Float (*function)(Float)>
void round(benchmark::State& state)
{
    std::vector<Float> const& values = numbers<Float>();
    std::size_t i = 0;
    for (auto _ : state) {
        Float result = function(values[i++ % count]);
        benchmark::DoNotOptimize(result);
    }
}
}  // namespace

int main(int argc, char** argv)
{
    using Vn::FloatUtil;
    VnBench::SideBySide comparison;
    comparison.add("floor, double", round<double, FloatUtil::floor>, "std::floor", round<double, std::floor>);
    comparison.add("ceil, double", round<double, FloatUtil::ceil>, "std::ceil", round<double, std::ceil>);
    comparison.add("round, double", round<double, FloatUtil::round>, "std::round", round<double, std::round>);
    comparison.add("floor, float", round<float, FloatUtil::floor>, "std::floor", round<float, std::floor>);
    comparison.add("ceil, float", round<float, FloatUtil::ceil>, "std::ceil", round<float, std::ceil>);
    comparison.add("round, float", round<float, FloatUtil::round>, "std::round", round<float, std::round>);
    return comparison.run(argc, argv);
}
