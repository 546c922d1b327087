// Samplers beside the GNU Scientific Library, Boost.Histogram and the language's library: single draws through the
// interface, and bulks of 4,096. Every peer does the same work with the same numbers of calls.

#include "sidebyside.h"

#include <base/rngaussianrng.h>
#include <base/rnhaltonbirng.h>
#include <base/rnhaltonmultirng.h>
#include <base/rnhistogram.h>
#include <base/rnhistogrambi.h>
#include <base/rnlecuyeruniformrng.h>
#include <base/rnniederreitermultirng.h>
#include <base/rnnumrecuniformrng.h>
#include <base/rnseparablemultirng.h>
#include <base/rnuniformsphericalrng.h>
#include <base/rnvandercorputrng.h>

#include <boost/histogram.hpp>
#include <gsl/gsl_qrng.h>
#include <gsl/gsl_rng.h>

#include <cmath>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace
{
constexpr unsigned int count = 4096;

/// Runs `draw(i)` for each of the numbers of an iteration.
template <class Draw>
void each(benchmark::State& state, Draw const& draw)
{
    for (auto _ : state) {
        for (unsigned int i = 0; i < count; ++i)
            benchmark::DoNotOptimize(draw(i));
    }
}

template <class Fill>
void bulk(benchmark::State& state, Fill const& fill)
{
    for (auto _ : state) {
        fill();
        benchmark::ClobberMemory();
    }
}

/// Hides an object's class from the compiler, so that a call goes through the interface.
template <class Interface>
Interface& hidden(Interface& object)
{
    Interface* pointer = &object;
    benchmark::DoNotOptimize(pointer);
    return *pointer;
}

template <class T>
struct Arrays
{
    std::vector<T> values[4] = {std::vector<T>(count), std::vector<T>(count), std::vector<T>(count),
                                std::vector<T>(count)};
    T* pointers[4] = {values[0].data(), values[1].data(), values[2].data(), values[3].data()};
};

class GslUniform
{
public:
    explicit GslUniform(gsl_rng_type const* type) : _rng(gsl_rng_alloc(type), &gsl_rng_free) {}
    double draw() const { return gsl_rng_uniform(_rng.get()); }

private:
    std::unique_ptr<gsl_rng, decltype(&gsl_rng_free)> _rng;
};

class GslPoints
{
public:
    GslPoints(gsl_qrng_type const* type, unsigned int dimensions)
        : _rng(gsl_qrng_alloc(type, dimensions), &gsl_qrng_free)
    {}
    void draw(double* point) const { gsl_qrng_get(_rng.get(), point); }

private:
    std::unique_ptr<gsl_qrng, decltype(&gsl_qrng_free)> _rng;
};

template <class T, class Rng>
void addUniform(VnBench::SideBySide& comparison, std::string const& what)
{
    auto const single = [](auto& state) {
        Rng rng;
        Vn::RnRng<T>& any = hidden<Vn::RnRng<T>>(rng);
        each(state, [&any](unsigned int) { return any(); });
    };
    auto const many = [](auto& state) {
        Rng rng;
        std::vector<T> samples(count);
        bulk(state, [&] { rng.getSequence(count, samples.data()); });
    };
    auto const gslSingle = [](auto& state) {
        const GslUniform gsl(gsl_rng_ran2);
        each(state, [&gsl](unsigned int) { return gsl.draw(); });
    };
    auto const gslMany = [](auto& state) {
        const GslUniform gsl(gsl_rng_ran2);
        std::vector<double> samples(count);
        bulk(state, [&] {
            for (double& sample : samples)
                sample = gsl.draw();
        });
    };
    comparison.add(what + ", single", single, "GSL ran2", gslSingle);
    comparison.add(what + ", bulk", many, "GSL ran2", gslMany);
}

template <class T, int dimensions, class Rng>
void addPoints(VnBench::SideBySide& comparison, std::string const& what, std::string const& peer,
               gsl_qrng_type const* const* type)
{
    auto const single = [](auto& state) {
        Rng rng;
        Vn::RnMultiRng<T, dimensions>& any = hidden<Vn::RnMultiRng<T, dimensions>>(rng);
        T point[dimensions];
        each(state, [&](unsigned int) {
            any.getSample(point);
            return point[0];
        });
    };
    auto const many = [](auto& state) {
        Rng rng;
        Arrays<T> arrays;
        bulk(state, [&] { rng.getSequence(count, arrays.pointers); });
    };
    auto const gslSingle = [type](auto& state) {
        const GslPoints gsl(*type, dimensions);
        double point[dimensions];
        each(state, [&](unsigned int) {
            gsl.draw(point);
            return point[0];
        });
    };
    auto const gslMany = [type](auto& state) {
        const GslPoints gsl(*type, dimensions);
        Arrays<double> arrays;
        bulk(state, [&] {
            double point[dimensions];
            for (unsigned int i = 0; i < count; ++i) {
                gsl.draw(point);
                for (int d = 0; d < dimensions; ++d)
                    arrays.pointers[d][i] = point[d];
            }
        });
    };
    comparison.add(what + ", single", single, peer, gslSingle);
    comparison.add(what + ", bulk", many, peer, gslMany);
}

/// The one-dimensional sequence behind its own interface.
template <class T>
void addVanDerCorput(VnBench::SideBySide& comparison, std::string const& what)
{
    auto const single = [](auto& state) {
        Vn::RnVanDerCorputRng<T> rng;
        Vn::RnRng<T>& any = hidden<Vn::RnRng<T>>(rng);
        each(state, [&any](unsigned int) { return any(); });
    };
    auto const many = [](auto& state) {
        Vn::RnVanDerCorputRng<T> rng;
        std::vector<T> samples(count);
        bulk(state, [&] { rng.getSequence(count, samples.data()); });
    };
    auto const gslSingle = [](auto& state) {
        const GslPoints gsl(gsl_qrng_halton, 1);
        each(state, [&gsl](unsigned int) {
            double value;
            gsl.draw(&value);
            return value;
        });
    };
    auto const gslMany = [](auto& state) {
        const GslPoints gsl(gsl_qrng_halton, 1);
        std::vector<double> samples(count);
        bulk(state, [&] {
            for (double& sample : samples)
                gsl.draw(&sample);
        });
    };
    comparison.add(what + ", single", single, "GSL Halton 1-D", gslSingle);
    comparison.add(what + ", bulk", many, "GSL Halton 1-D", gslMany);
}

template <class T>
void addGaussian(VnBench::SideBySide& comparison, std::string const& what)
{
    auto const single = [](auto& state) {
        Vn::RnLecuyerUniformRng<T> uniform;
        Vn::RnGaussianRng<T> rng(&uniform);
        Vn::RnRng<T>& any = hidden<Vn::RnRng<T>>(rng);
        each(state, [&any](unsigned int) { return any(); });
    };
    auto const many = [](auto& state) {
        Vn::RnLecuyerUniformRng<T> uniform;
        Vn::RnGaussianRng<T> rng(&uniform);
        std::vector<T> samples(count);
        bulk(state, [&] { rng.getSequence(count, samples.data()); });
    };
    auto const stdSingle = [](auto& state) {
        std::mt19937 engine;
        std::normal_distribution<T> normal;
        each(state, [&](unsigned int) { return normal(engine); });
    };
    auto const stdMany = [](auto& state) {
        std::mt19937 engine;
        std::normal_distribution<T> normal;
        std::vector<T> samples(count);
        bulk(state, [&] {
            for (T& sample : samples)
                sample = normal(engine);
        });
    };
    comparison.add(what + ", single", single, "std::normal on mt19937", stdSingle);
    comparison.add(what + ", bulk", many, "std::normal on mt19937", stdMany);
}

/// The formula that one writes down for a direction, with the same source.
template <class T>
void plainDirection(T u0, T u1, T& x, T& y, T& z)
{
    const T phi = T(6.283185307179586) * u1;
    z = T(2) * u0 - T(1);
    const T r = std::sqrt(T(1) - z * z);
    x = r * std::cos(phi);
    y = r * std::sin(phi);
}

template <class T>
void addSphere(VnBench::SideBySide& comparison, std::string const& what)
{
    auto const single = [](auto& state) {
        Vn::RnHaltonBiRng<T> points;
        Vn::RnUniformSphericalRng<T> rng(&points);
        Vn::RnSphericalRng<T>& any = hidden<Vn::RnSphericalRng<T>>(rng);
        each(state, [&any](unsigned int) {
            T x, y, z;
            any.getSampleXYZ(x, y, z);
            return x + y + z;
        });
    };
    auto const many = [](auto& state) {
        Vn::RnHaltonBiRng<T> points;
        Vn::RnUniformSphericalRng<T> rng(&points);
        Arrays<T> arrays;
        bulk(state, [&] { rng.getSequenceXYZ(count, arrays.pointers[0], arrays.pointers[1], arrays.pointers[2]); });
    };
    auto const plainSingle = [](auto& state) {
        Vn::RnHaltonBiRng<T> points;
        Vn::RnBiRng<T>& any = hidden<Vn::RnBiRng<T>>(points);
        each(state, [&any](unsigned int) {
            T u0, u1, x, y, z;
            any.getSample(u0, u1);
            plainDirection(u0, u1, x, y, z);
            return x + y + z;
        });
    };
    auto const plainMany = [](auto& state) {
        Vn::RnHaltonBiRng<T> points;
        Arrays<T> arrays;
        T** const a = arrays.pointers;
        bulk(state, [&] {
            points.getSequence(count, a[0], a[2]);
            for (unsigned int i = 0; i < count; ++i)
                plainDirection(a[2][i], a[0][i], a[0][i], a[1][i], a[2][i]);
        });
    };
    comparison.add(what + ", single", single, "a plain loop", plainSingle);
    comparison.add(what + ", bulk", many, "a plain loop", plainMany);
}

namespace bh = boost::histogram;

std::vector<double> const& edges()
{
    static const std::vector<double> made = [] {
        std::vector<double> values;
        for (int i = 0; i <= 64; ++i)
            values.push_back(i * i / 4096.0);
        return values;
    }();
    return made;
}

std::vector<double> const& numbers()
{
    static const std::vector<double> made = [] {
        std::vector<double> values(65536);
        Vn::RnLecuyerUniformRng<double>().getSequence(65536, values.data());
        return values;
    }();
    return made;
}

/// One by one from a table; in bulk from a generator, which the peer asks for an array and then fills that in.
template <class Ours, class Theirs>
void addHistogram(VnBench::SideBySide& comparison, std::string const& what, Ours const& makeOurs,
                  std::string const& peer, Theirs const& makeTheirs)
{
    auto const single = [makeOurs](auto& state) {
        auto histogram = makeOurs();
        double const* next = numbers().data();
        unsigned int at = 0;
        each(state, [&](unsigned int) {
            at = (at + 1) & 65535;
            histogram.addSample(next[at], 1.0);
            return at;
        });
    };
    auto const many = [makeOurs](auto& state) {
        auto histogram = makeOurs();
        Vn::RnLecuyerUniformRng<double> rng;
        bulk(state, [&] { histogram.addSamples(rng, count); });
    };
    auto const boostSingle = [makeTheirs](auto& state) {
        auto histogram = makeTheirs();
        double const* next = numbers().data();
        unsigned int at = 0;
        each(state, [&](unsigned int) {
            at = (at + 1) & 65535;
            histogram(next[at]);
            return at;
        });
    };
    auto const boostMany = [makeTheirs](auto& state) {
        auto histogram = makeTheirs();
        Vn::RnLecuyerUniformRng<double> rng;
        std::vector<double> samples(count);
        bulk(state, [&] {
            rng.getSequence(count, samples.data());
            histogram.fill(samples);
        });
    };
    comparison.add(what + ", single", single, peer, boostSingle);
    comparison.add(what + ", bulk", many, peer, boostMany);
}

template <class Theirs>
void addHistogramBi(VnBench::SideBySide& comparison, std::string const& peer, Theirs const& makeTheirs)
{
    auto const single = [](auto& state) {
        Vn::RnUniformHistogramBi<double> histogram(32, 32, 0.0, 1.0, 0.0, 1.0);
        double const* next = numbers().data();
        unsigned int at = 0;
        each(state, [&](unsigned int) {
            at = (at + 2) & 65535;
            histogram.addSample(next[at], next[at + 1], 1.0);
            return at;
        });
    };
    auto const many = [](auto& state) {
        Vn::RnUniformHistogramBi<double> histogram(32, 32, 0.0, 1.0, 0.0, 1.0);
        Vn::RnHaltonBiRng<double> rng;
        bulk(state, [&] { histogram.addSamples(rng, count); });
    };
    auto const boostSingle = [makeTheirs](auto& state) {
        auto histogram = makeTheirs();
        double const* next = numbers().data();
        unsigned int at = 0;
        each(state, [&](unsigned int) {
            at = (at + 2) & 65535;
            histogram(next[at], next[at + 1]);
            return at;
        });
    };
    auto const boostMany = [makeTheirs](auto& state) {
        auto histogram = makeTheirs();
        Vn::RnHaltonBiRng<double> rng;
        std::vector<std::vector<double>> samples(2, std::vector<double>(count));
        bulk(state, [&] {
            rng.getSequence(count, samples[0].data(), samples[1].data());
            histogram.fill(samples);
        });
    };
    comparison.add("2-D histogram, single", single, peer, boostSingle);
    comparison.add("2-D histogram, bulk", many, peer, boostMany);
}
}  // namespace

int main(int argc, char** argv)
{
    VnBench::SideBySide comparison(count);
    addUniform<double, Vn::RnLecuyerUniformRng<double>>(comparison, "L'Ecuyer, double");
    addUniform<float, Vn::RnLecuyerUniformRng<float>>(comparison, "L'Ecuyer, float");
    addUniform<double, Vn::RnNumRecUniformRng<double>>(comparison, "shuffled, double");
    addUniform<float, Vn::RnNumRecUniformRng<float>>(comparison, "shuffled, float");
    addVanDerCorput<double>(comparison, "base 2, double");
    addVanDerCorput<float>(comparison, "base 2, float");
    addPoints<double, 3, Vn::RnHaltonMultiRng<double, 3>>(comparison, "Halton 3-D, double", "GSL Halton",
                                                          &gsl_qrng_halton);
    addPoints<float, 3, Vn::RnHaltonMultiRng<float, 3>>(comparison, "Halton 3-D, float", "GSL Halton",
                                                        &gsl_qrng_halton);
    addPoints<double, 4, Vn::RnNiederreiterMultiRng<double>>(comparison, "Niederreiter, double",
                                                             "GSL niederreiter_2", &gsl_qrng_niederreiter_2);
    addPoints<float, 4, Vn::RnNiederreiterMultiRng<float>>(comparison, "Niederreiter, float", "GSL niederreiter_2",
                                                           &gsl_qrng_niederreiter_2);
    addGaussian<double>(comparison, "Gaussian, double");
    addGaussian<float>(comparison, "Gaussian, float");
    addSphere<double>(comparison, "sphere, double");
    addSphere<float>(comparison, "sphere, float");
    // Their default storage, and an array of doubles as ours is; neither keeps a total.
    auto const uniform = [] { return Vn::RnUniformHistogram<double>(64, 0.0, 1.0); };
    auto const byEdges = [] { return Vn::RnHistogram<double>(64, edges().data()); };
    const bh::axis::regular<> axis(64, 0.0, 1.0);
    const bh::axis::variable<> edgeAxis(edges());
    const bh::axis::regular<> side(32, 0.0, 1.0);
    using Dense = bh::dense_storage<double>;
    addHistogram(comparison, "uniform histogram", uniform, "Boost.Histogram",
                 [axis] { return bh::make_histogram(axis); });
    addHistogram(comparison, "uniform histogram ", uniform, "Boost.Histogram, doubles",
                 [axis] { return bh::make_histogram_with(Dense(), axis); });
    addHistogram(comparison, "edges histogram", byEdges, "Boost.Histogram",
                 [edgeAxis] { return bh::make_histogram(edgeAxis); });
    addHistogram(comparison, "edges histogram ", byEdges, "Boost.Histogram, doubles",
                 [edgeAxis] { return bh::make_histogram_with(Dense(), edgeAxis); });
    addHistogramBi(comparison, "Boost.Histogram", [side] { return bh::make_histogram(side, side); });
    addHistogramBi(comparison, "Boost.Histogram, doubles",
                   [side] { return bh::make_histogram_with(Dense(), side, side); });
    return comparison.run(argc, argv);
}
