// Samplers and histograms while memory runs out: a constructor that fails leaves nothing, an assignment the old value.

#include "memory.h"

#include <base/rngaussianrng.h>
#include <base/rnhistogrambirng.h>
#include <base/rnhistogramrng.h>
#include <base/rnhistogramspherical.h>
#include <base/rnlecuyeruniformrng.h>
#include <base/rnnumrecuniformrng.h>

#include <gtest/gtest.h>

#include <optional>
#include <sstream>
#include <string>

using VnTest::failsWithoutMemory;

namespace
{
/// Constructs with each allocation failing in turn.
template <class Object, class... Arguments>
int countFailures(Arguments const&... arguments)
{
    std::optional<Object> object;
    int n = 0;
    for (; failsWithoutMemory(n, [&] { object.emplace(arguments...); }); ++n)
        EXPECT_FALSE(object.has_value());
    EXPECT_TRUE(object.has_value());
    return n;
}

template <class Histogram>
std::string dumpOf(Histogram const& histogram)
{
    std::ostringstream stream;
    histogram.dump(stream);
    return stream.str();
}

/// Assigns with each allocation failing in turn.
template <class Histogram>
void expectAllOrNothing(Histogram target, Histogram const& source)
{
    const std::string before = dumpOf(target), after = dumpOf(source);
    int n = 0;
    for (; failsWithoutMemory(n, [&] { target = source; }); ++n)
        EXPECT_EQ(dumpOf(target), before);
    EXPECT_GT(n, 0);
    EXPECT_EQ(dumpOf(target), after);
    target = *&target;
    EXPECT_EQ(dumpOf(target), after);
}
}  // namespace

TEST(OutOfMemory, constructorsLeaveNothing)
{
    Vn::RnLecuyerUniformRng<double> uniform;
    Vn::RnRng<double>* const source = &uniform;
    EXPECT_EQ(countFailures<Vn::RnNumRecUniformRng<double>>(7u), 1);
    EXPECT_GE((countFailures<Vn::RnHistogram<double>>(8u, 0.0, 1.0)), 2);
    EXPECT_GE((countFailures<Vn::RnUniformHistogram<double>>(8u, 0.0, 1.0)), 2);
    EXPECT_GE((countFailures<Vn::RnHistogramBi<double>>(8u, 8u, 0.0, 1.0, 0.0, 1.0)), 3);
    EXPECT_GE((countFailures<Vn::RnHistogramSpherical<double>>(8u, 8u)), 1);
    const Vn::RnHistogram<double> line(8, 0.0, 1.0);
    const Vn::RnHistogramBi<double> area(8, 8, 0.0, 1.0, 0.0, 1.0);
    EXPECT_GE((countFailures<Vn::RnHistogram<double>>(line)), 2);
    EXPECT_GE((countFailures<Vn::RnHistogramRng<double>>(line, source)), 2);
    EXPECT_GE((countFailures<Vn::RnHistogramBiRng<double>>(area, source)), 3);
}

TEST(OutOfMemory, assignedHistogramsTakeAllOrNothing)
{
    Vn::RnLecuyerUniformRng<double> uniform;
    Vn::RnHistogram<double> line(50, 0.0, 1.0);
    line.addSamples(uniform, 100);
    expectAllOrNothing(Vn::RnHistogram<double>(4, -1.0, 2.0), line);
    Vn::RnUniformHistogram<double> even(50, 0.0, 1.0);
    even.addSamples(uniform, 100);
    expectAllOrNothing(Vn::RnUniformHistogram<double>(4, -1.0, 2.0), even);
    Vn::RnHistogramBi<double> area(9, 7, 0.0, 1.0, 0.0, 1.0);
    area.addSample(0.5, 0.5, 3.0);
    expectAllOrNothing(Vn::RnHistogramBi<double>(2, 2, 0.0, 5.0, 0.0, 5.0), area);
    Vn::RnHistogramSpherical<double> sphere(9, 7);
    sphere.addSampleCosine(0.5, 1.0);
    expectAllOrNothing(Vn::RnHistogramSpherical<double>(2, 2), sphere);
    Vn::RnHistogramHemispherical<double> hemisphere(9, 7);
    hemisphere.addSampleCosine(0.5, 1.0);
    expectAllOrNothing(Vn::RnHistogramHemispherical<double>(2, 2), hemisphere);
}

TEST(OutOfMemory, drawingAndCountingNeedNone)
{
    Vn::RnLecuyerUniformRng<double> uniform;
    Vn::RnGaussianRng<double> gaussian(&uniform);
    Vn::RnUniformHistogram<double> histogram(16, -2.0, 2.0);
    Vn::RnHistogramRng<double> again(histogram, &uniform);
    double samples[1000];
    EXPECT_FALSE(failsWithoutMemory(0, [&] {
        gaussian.getSequence(1000, samples);
        histogram.addSamples(gaussian, 5000);
        again.getSequence(1000, samples);
    }));
    EXPECT_GT(histogram.getTotal(), 4000.0);
}
