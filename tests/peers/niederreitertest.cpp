#include <base/rnniederreitermultirng.h>

#include <gsl/gsl_qrng.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>
#include <vector>

namespace
{
using Point = std::array<double, 4>;

/// GSL's points from number `first` on. It walks the same points in Gray code.
std::vector<Point> theirPoints(unsigned int first, unsigned int count)
{
    const std::unique_ptr<gsl_qrng, decltype(&gsl_qrng_free)> rng(gsl_qrng_alloc(gsl_qrng_niederreiter_2, 4),
                                                                  &gsl_qrng_free);
    Point point;
    for (unsigned int i = 0; i < first; ++i)
        gsl_qrng_get(rng.get(), point.data());
    std::vector<Point> points(count);
    for (Point& each : points)
        gsl_qrng_get(rng.get(), each.data());
    return points;
}

/// An aligned set of 2^k numbers is an aligned set in Gray code too, in another order; as a rule not the same one, but from
/// 2^k to 2^(k + 1) it is.
unsigned int firstInGrayCode(unsigned int first, unsigned int count)
{
    return (first ^ (first >> 1)) & ~(count - 1);
}

/// Ours, which begin with number 4,096.
std::vector<Point> ourPoints(unsigned int first, unsigned int count)
{
    Vn::RnNiederreiterMultiRng<double> rng;
    rng.restart(first - 4096);
    std::vector<Point> points(count);
    for (Point& each : points)
        rng.getSample(each.data());
    return points;
}
}  // namespace

TEST(NiederreiterPeer, alignedSetsAreTheSamePoints)
{
    for (unsigned int count : {1u, 2u, 16u, 256u, 4096u, 16384u}) {
        for (unsigned int first : {4096u, 8192u, 16384u, 65536u}) {
            if (first % count != 0)
                continue;
            EXPECT_TRUE(count != first || firstInGrayCode(first, count) == first);
            SCOPED_TRACE(testing::Message() << count << " points from " << first);
            std::vector<Point> ours = ourPoints(firstInGrayCode(first, count), count);
            std::vector<Point> theirs = theirPoints(first, count);
            std::sort(ours.begin(), ours.end());
            std::sort(theirs.begin(), theirs.end());
            EXPECT_EQ(ours, theirs);
        }
    }
}
