#include "expectthrow.h"
#include "rnscripted.h"

#include <base/exinternalerror.h>
#include <base/rncosinehemisphericalrng.h>
#include <base/rngaussianrng.h>
#include <base/rnhaltonbirng.h>
#include <base/rnhammersleybirng.h>
#include <base/rnlecuyeruniformrng.h>
#include <base/rnseparablemultirng.h>
#include <base/rnuniformsphericalrng.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <memory>
#include <numbers>
#include <vector>

using Vn::RnBiRng;
using Vn::RnCosineHemisphericalRng;
using Vn::RnSphericalRng;
using Vn::RnUniformHemisphericalRng;
using Vn::RnUniformSphericalRng;
using VnTest::ScriptedBiRng;

namespace
{
struct Row
{
    unsigned int n;
    int which;
    std::uint32_t single[4];
    std::uint64_t twice[4];
};

constexpr Row rows[] = {
#include "../reference/directions.inc"
};

std::uint64_t bitsOf(float value)
{
    return std::bit_cast<std::uint32_t>(value);
}

std::uint64_t bitsOf(double value)
{
    return std::bit_cast<std::uint64_t>(value);
}

void expectReckoned(float value, Row const& row, int i)
{
    EXPECT_EQ(bitsOf(value), row.single[i]) << "point " << row.n << ", sampler " << row.which << ", value " << i;
}

void expectReckoned(double value, Row const& row, int i)
{
    const double expected = std::bit_cast<double>(row.twice[i]);
    EXPECT_NEAR(value, expected, 3e-16 * std::abs(expected)) << "point " << row.n << ", sampler " << row.which;
}

template <class T>
std::unique_ptr<RnSphericalRng<T>> make(int which, RnBiRng<T>* source)
{
    if (which == 0)
        return std::make_unique<RnUniformSphericalRng<T>>(source);
    if (which == 1)
        return std::make_unique<RnUniformHemisphericalRng<T>>(source);
    return std::make_unique<RnCosineHemisphericalRng<T>>(source);
}

template <class T>
class RnSphericalTest : public testing::Test
{};

using Types = testing::Types<float, double>;
}  // namespace

static_assert(std::is_base_of_v<Vn::RnHemisphericalRng<float>, RnCosineHemisphericalRng<float>>);
static_assert(std::is_base_of_v<Vn::RnHemisphericalRng<float>, RnUniformHemisphericalRng<float>>);
static_assert(!std::is_base_of_v<Vn::RnHemisphericalRng<float>, RnUniformSphericalRng<float>>);

TYPED_TEST_SUITE(RnSphericalTest, Types);

TYPED_TEST(RnSphericalTest, directionsAreTheReckonedOnes)
{
    using T = TypeParam;
    for (Row const& row : rows) {
        Vn::RnHaltonBiRng<T> source;
        auto const sampler = make<T>(row.which, &source);
        T x, y, z, phi, theta;
        source.restart(row.n - 1);
        sampler->getSampleXYZ(x, y, z);
        expectReckoned(x, row, 0);
        expectReckoned(y, row, 1);
        expectReckoned(z, row, 2);
        source.restart(row.n - 1);
        sampler->getSampleCosine(z, phi);
        expectReckoned(z, row, 2);
        expectReckoned(phi, row, 3);
        source.restart(row.n - 1);
        sampler->getSampleAngles(theta, phi);
        expectReckoned(phi, row, 3);
        EXPECT_NEAR(theta, std::acos(z), 4 * std::numeric_limits<T>::epsilon());
    }
}

TYPED_TEST(RnSphericalTest, mappingsDrawNothingAndAreTheSamplers)
{
    using T = TypeParam;
    Vn::RnHaltonBiRng<T> source, points;
    RnUniformSphericalRng<T> sphere(&source);
    RnUniformHemisphericalRng<T> hemisphere(&source);
    RnCosineHemisphericalRng<T> cosine(&source);
    for (int i = 0; i < 50; ++i) {
        T u0, u1, x, y, z, theta, phi, ex, ey, ez, etheta, ephi;
        points.getSample(u0, u1);
        auto const compare = [&](auto& sampler) {
            const unsigned int index = static_cast<unsigned int>(i);
            source.restart(index);
            sampler.mapToXYZ(u0, u1, x, y, z);
            sampler.getSampleXYZ(ex, ey, ez);
            EXPECT_TRUE(x == ex && y == ey && z == ez);
            source.restart(index);
            sampler.mapToAngles(u0, u1, theta, phi);
            sampler.getSampleAngles(etheta, ephi);
            EXPECT_TRUE(theta == etheta && phi == ephi);
            source.restart(index);
            sampler.mapToCosine(u0, u1, z, phi);
            sampler.getSampleCosine(ez, ephi);
            EXPECT_TRUE(z == ez && phi == ephi);
        };
        compare(sphere);
        compare(hemisphere);
        compare(cosine);
    }
}

TYPED_TEST(RnSphericalTest, sphereMeetsItsAxes)
{
    using T = TypeParam;
    Vn::RnHaltonBiRng<T> source;
    const RnUniformSphericalRng<T> sphere(&source);
    T x, y, z;
    sphere.mapToXYZ(T(0.5), T(0), x, y, z);
    EXPECT_TRUE(x == T(1) && y == T(0) && z == T(0));
    sphere.mapToXYZ(T(1), T(0), x, y, z);
    EXPECT_TRUE(x == T(0) && y == T(0) && z == T(1));
    sphere.mapToXYZ(T(0), T(0.3), x, y, z);
    EXPECT_TRUE(x == T(0) && y == T(0) && z == T(-1));
    sphere.mapToXYZ(T(0.5), T(0.25), x, y, z);
    EXPECT_NEAR(x, T(0), T(1e-7));
    EXPECT_EQ(y, T(1));
}

TYPED_TEST(RnSphericalTest, hemispheresMeetTheirPlane)
{
    using T = TypeParam;
    Vn::RnHaltonBiRng<T> source;
    const RnUniformHemisphericalRng<T> even(&source);
    const RnCosineHemisphericalRng<T> cosine(&source);
    T x, y, z, theta, phi;
    even.mapToXYZ(T(0), T(0.7), x, y, z);
    EXPECT_EQ(z, T(0));
    EXPECT_NEAR(x * x + y * y, T(1), T(1e-6));
    cosine.mapToXYZ(T(0), T(0.7), x, y, z);
    EXPECT_EQ(z, T(0));
    cosine.mapToCosine(T(0.25), T(0), z, phi);
    EXPECT_EQ(z, T(0.5));
    cosine.mapToAngles(T(0.25), T(1), theta, phi);
    EXPECT_NEAR(theta, std::numbers::pi_v<T> / 3, 2 * std::numeric_limits<T>::epsilon());
    EXPECT_EQ(phi, sizeof(T) == 4 ? T(6.2831855f) : T(6.283185307179586));
}

TYPED_TEST(RnSphericalTest, vectorsHaveUnitLength)
{
    using T = TypeParam;
    for (int which = 0; which < 3; ++which) {
        Vn::RnHaltonBiRng<T> source;
        auto const sampler = make<T>(which, &source);
        for (int i = 0; i < 2000; ++i) {
            T x, y, z;
            sampler->getSampleXYZ(x, y, z);
            EXPECT_NEAR(x * x + y * y + z * z, T(1), T(8) * std::numeric_limits<T>::epsilon());
            EXPECT_TRUE(which == 0 || z >= T(0));
        }
    }
}

TYPED_TEST(RnSphericalTest, sequencesAreMadeOfSequencePoints)
{
    using T = TypeParam;
    typename ScriptedBiRng<T>::Points sequence = {{T(0.25), T(0.75)}, {T(0.125), T(0.5)}, {T(0.9), T(0.1)}};
    for (int which = 0; which < 3; ++which) {
        ScriptedBiRng<T> source({{T(0), T(0)}}, sequence);
        auto const sampler = make<T>(which, &source);
        std::vector<T> a(3), b(3), theta(3), phi(3);
        sampler->getSequenceCosine(3, a.data(), b.data());
        sampler->getSequenceAngles(3, theta.data(), phi.data());
        for (std::size_t i = 0; i < 3; ++i) {
            ScriptedBiRng<T> single({sequence[i]});
            auto const other = make<T>(which, &single);
            T c, p;
            other->getSampleCosine(c, p);
            EXPECT_TRUE(a[i] == c && b[i] == p);
            other->getSampleAngles(c, p);
            EXPECT_TRUE(theta[i] == c && phi[i] == p);
        }
        EXPECT_EQ(source.draws, 0u);
    }
}

TYPED_TEST(RnSphericalTest, vectorsInBulkTakeTheirCoordinatesTheOtherWayRound)
{
    using T = TypeParam;
    for (int which = 0; which < 3; ++which) {
        for (unsigned int size : {1u, 2u, 63u, 64u, 65u, 1000u}) {
            Vn::RnHaltonBiRng<T> source, points;
            auto const sampler = make<T>(which, &source);
            std::vector<T> x(size), y(size), z(size);
            sampler->getSequenceXYZ(size, x.data(), y.data(), z.data());
            for (unsigned int i = 0; i < size; ++i) {
                T u0, u1, ex, ey, ez;
                points.getSample(u0, u1);
                ScriptedBiRng<T> swapped({{u1, u0}});
                make<T>(which, &swapped)->getSampleXYZ(ex, ey, ez);
                ASSERT_EQ(bitsOf(x[i]), bitsOf(ex));
                ASSERT_EQ(bitsOf(y[i]), bitsOf(ey));
                ASSERT_EQ(bitsOf(z[i]), bitsOf(ez));
            }
        }
    }
}

TYPED_TEST(RnSphericalTest, takesPointsFarOutsideTheSquare)
{
    using T = TypeParam;
    const T nan = std::numeric_limits<T>::quiet_NaN();
    typename ScriptedBiRng<T>::Points const points = {
        {T(1e15), T(0.5)}, {T(-0.25), T(0.5)}, {nan, T(0.25)}, {T(0.5), T(3)}};
    for (int which = 0; which < 3; ++which) {
        ScriptedBiRng<T> source(points);
        auto const sampler = make<T>(which, &source);
        T x[4], y[4], z[4], ex, ey, ez;
        sampler->getSequenceXYZ(4, x, y, z);
        for (std::size_t i = 0; i < 4; ++i) {
            ScriptedBiRng<T> swapped({{points[i].second, points[i].first}});
            make<T>(which, &swapped)->getSampleXYZ(ex, ey, ez);
            EXPECT_TRUE(x[i] == ex || (std::isnan(x[i]) && std::isnan(ex)));
            EXPECT_TRUE(y[i] == ey || (std::isnan(y[i]) && std::isnan(ey)));
            EXPECT_TRUE(z[i] == ez || (std::isnan(z[i]) && std::isnan(ez)));
        }
        EXPECT_LE(x[0] * x[0] + y[0] * y[0] + z[0] * z[0], T(1.00001));
        EXPECT_NEAR(x[1], T(0), T(1e-6));
        EXPECT_TRUE(std::isnan(x[2]));
    }
}

TYPED_TEST(RnSphericalTest, hammersleySequencesStartTheirRampAgain)
{
    using T = TypeParam;
    Vn::RnHammersleyBiRng<T> source(4);
    RnUniformHemisphericalRng<T> sampler(&source);
    T c[4], phi[4];
    sampler.getSampleCosine(c[0], phi[0]);
    EXPECT_EQ(c[0], T(0.125));
    sampler.getSequenceCosine(4, c, phi);
    EXPECT_EQ(c[0], T(0.125));
    EXPECT_EQ(c[3], T(0.875));
    sampler.getSampleCosine(c[0], phi[0]);
    EXPECT_EQ(c[0], T(0.375));
}

TYPED_TEST(RnSphericalTest, emptySequencesTouchNothing)
{
    using T = TypeParam;
    for (int which = 0; which < 3; ++which) {
        Vn::RnHaltonBiRng<T> source;
        auto const sampler = make<T>(which, &source);
        T untouched = T(7);
        sampler->getSequenceXYZ(0, &untouched, &untouched, &untouched);
        sampler->getSequenceAngles(0, &untouched, &untouched);
        sampler->getSequenceCosine(0, &untouched, &untouched);
        EXPECT_EQ(untouched, T(7));
    }
}

TYPED_TEST(RnSphericalTest, densitiesDontLookAtTheirArguments)
{
    using T = TypeParam;
    Vn::RnHaltonBiRng<T> source;
    const RnUniformSphericalRng<T> sphere(&source);
    const RnUniformHemisphericalRng<T> hemisphere(&source);
    const RnCosineHemisphericalRng<T> cosine(&source);
    const T quarter = sizeof(T) == 4 ? T(0.07957747f) : T(0.07957747154594767);
    const T half = sizeof(T) == 4 ? T(0.15915494f) : T(0.15915494309189535);
    const T whole = sizeof(T) == 4 ? T(0.31830987f) : T(0.3183098861837907);
    const T nan = std::numeric_limits<T>::quiet_NaN();
    for (T z : {T(1), T(-1), nan}) {
        EXPECT_EQ(sphere.getPdfXYZ(T(0), T(0), z), quarter);
        EXPECT_EQ(sphere.getPdfAngles(z, T(9)), quarter);
        EXPECT_EQ(sphere.getPdfCosine(z, T(9)), quarter);
        EXPECT_EQ(hemisphere.getPdfXYZ(T(0), T(0), z), half);
        EXPECT_EQ(hemisphere.getPdfAngles(z, T(9)), half);
        EXPECT_EQ(hemisphere.getPdfCosine(z, T(9)), half);
    }
    EXPECT_EQ(cosine.getPdfXYZ(T(0), T(0), T(1)), whole);
    EXPECT_EQ(cosine.getPdfXYZ(T(0), T(0), T(-0.5)), T(-0.5) * whole);
    EXPECT_EQ(cosine.getPdfCosine(T(-0.5), T(0)), T(-0.5) * whole);
    EXPECT_EQ(cosine.getPdfAngles(T(0), T(0)), whole);
    EXPECT_LT(cosine.getPdfAngles(T(3), T(0)), T(0));
    EXPECT_TRUE(std::isnan(cosine.getPdfCosine(nan, T(0))));
}

TYPED_TEST(RnSphericalTest, namesAndRestarts)
{
    using T = TypeParam;
    char const* const names[] = {"Uniform spherical", "Uniform hemispherical", "Cosine hemispherical"};
    for (int which = 0; which < 3; ++which) {
        ScriptedBiRng<T> source({{T(0), T(0)}});
        auto const sampler = make<T>(which, &source);
        EXPECT_STREQ(sampler->getName(), names[which]);
        sampler->restart();
        EXPECT_EQ(source.restarts, 1);
    }
}

TYPED_TEST(RnSphericalTest, sourcesAreChecked)
{
    using T = TypeParam;
    for (int which = 0; which < 3; ++which) {
        auto const call = [which] { make<T>(which, nullptr); };
        VnTest::expectThrow<Vn::ExInternalError, std::runtime_error>(call, "Assertion '_rng' failed.");
        try {
            call();
        } catch (Vn::ExBase const& failure) {
            EXPECT_STREQ(failure.getFileName(),
                         which == 2 ? "src/base/rncosinehemisphericalrng" : "src/base/rnuniformsphericalrng");
        }
    }
}

// The lines of use and the examples of edges that the classes' comments show.

namespace
{
int countBelow(Vn::RnHemisphericalRng<float>& directions)
{
    int below = 0;
    for (int i = 0; i < 100; ++i) {
        float x, y, z;
        directions.getSampleXYZ(x, y, z);  // z is up
        below += z < 0.0f ? 1 : 0;
    }
    return below;
}
}  // namespace

TEST(RnCosineHemispherical, isUsedAsItsCommentShows)
{
    const unsigned int n = 100;
    std::vector<float> xs(n), ys(n), zs(n);
    float *const x = xs.data(), *const y = ys.data(), *const z = zs.data();
    Vn::RnHaltonBiRng<float> source;
    Vn::RnCosineHemisphericalRng<float> directions(&source);
    directions.getSequenceXYZ(n, x, y, z);
    for (unsigned int i = 0; i < n; ++i)
        EXPECT_NEAR(x[i] * x[i] + y[i] * y[i] + z[i] * z[i], 1.0f, 1e-6f);
    EXPECT_EQ(countBelow(directions), 0);
    EXPECT_FLOAT_EQ(directions.getPdfXYZ(0, 0, 1), std::numbers::inv_pi_v<float>);
    EXPECT_EQ(directions.getPdfXYZ(1, 0, 0), 0.0f);
    EXPECT_FLOAT_EQ(directions.getPdfXYZ(0, 0, -1), -std::numbers::inv_pi_v<float>);
    float cosTheta, phi;
    directions.mapToCosine(0.25f, 0, cosTheta, phi);
    EXPECT_EQ(cosTheta, 0.5f);
    directions.mapToXYZ(0, 0, x[0], y[0], z[0]);
    EXPECT_TRUE(x[0] == 1.0f && y[0] == 0.0f && z[0] == 0.0f);
    directions.mapToXYZ(-0.1f, 0, x[0], y[0], z[0]);
    EXPECT_TRUE(std::isnan(x[0]) && std::isnan(y[0]) && std::isnan(z[0]));
}

TEST(RnUniformSpherical, isUsedAsItsCommentShows)
{
    const unsigned int n = 100;
    std::vector<float> xs(n), ys(n), zs(n);
    float *const x = xs.data(), *const y = ys.data(), *const z = zs.data();
    Vn::RnHaltonBiRng<float> source;
    Vn::RnUniformSphericalRng<float> directions(&source);
    directions.getSequenceXYZ(n, x, y, z);
    for (unsigned int i = 0; i < n; ++i)
        EXPECT_NEAR(x[i] * x[i] + y[i] * y[i] + z[i] * z[i], 1.0f, 1e-6f);
    directions.mapToXYZ(0.5f, 0, x[0], y[0], z[0]);
    EXPECT_TRUE(x[0] == 1.0f && y[0] == 0.0f && z[0] == 0.0f);
    directions.mapToXYZ(1, 0.3f, x[0], y[0], z[0]);
    EXPECT_TRUE(x[0] == 0.0f && y[0] == 0.0f && z[0] == 1.0f);
    float theta, phi;
    directions.mapToAngles(0, 0.3f, theta, phi);
    EXPECT_FLOAT_EQ(theta, std::numbers::pi_v<float>);
    directions.mapToXYZ(1.5f, 0, x[0], y[0], z[0]);
    EXPECT_TRUE(std::isnan(x[0]) && std::isnan(y[0]) && z[0] == 2.0f);
}

TEST(RnUniformHemispherical, isUsedAsItsCommentShows)
{
    const unsigned int n = 100;
    std::vector<float> xs(n), ys(n), zs(n);
    float *const x = xs.data(), *const y = ys.data(), *const z = zs.data();
    Vn::RnHaltonBiRng<float> source;
    Vn::RnUniformHemisphericalRng<float> directions(&source);
    directions.getSequenceXYZ(n, x, y, z);  // no z is negative
    EXPECT_GE(*std::min_element(zs.begin(), zs.end()), 0.0f);
    EXPECT_EQ(countBelow(directions), 0);
    directions.mapToXYZ(0, 0, x[0], y[0], z[0]);
    EXPECT_TRUE(x[0] == 1.0f && y[0] == 0.0f && z[0] == 0.0f);
    directions.mapToXYZ(1, 0.3f, x[0], y[0], z[0]);
    EXPECT_TRUE(x[0] == 0.0f && y[0] == 0.0f && z[0] == 1.0f);
}
