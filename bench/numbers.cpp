// Numbers and samplers row by row, each beside what a user would take instead: intervals, fractions, stream time and its
// text, draws from distributions, histograms. Contestants take turns in short rounds, and the best round of each counts.
//
//     benchnumbers [ROUNDS] [PART OF A ROW'S NAME]
#include "rounds.h"

#include <base/dttime.h>
#include <base/dttimeutil.h>
#include <base/interval.h>
#include <base/rngaussianrng.h>
#include <base/rnhaltonbirng.h>
#include <base/rnhistogram.h>
#include <base/rnhistogrambi.h>
#include <base/rnhistogrambirng.h>
#include <base/rnhistogramrng.h>
#include <base/rnlecuyeruniformrng.h>
#include <base/rnniederreitermultirng.h>
#include <base/rnstduniformrng.h>
#include <base/rnuniformsphericalrng.h>
#include <base/rnvandercorputrng.h>

#include <benchmark/benchmark.h>
#include <boost/histogram.hpp>
#include <boost/numeric/interval.hpp>
#include <boost/random/mersenne_twister.hpp>
#include <boost/random/niederreiter_base2.hpp>
#include <boost/random/normal_distribution.hpp>
#include <boost/rational.hpp>
#include <gsl/gsl_histogram.h>
#include <gsl/gsl_qrng.h>
#include <gsl/gsl_randist.h>
#include <gsl/gsl_rng.h>

#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace VnBench
{

/// The least that a draw through an interface takes: a call that counts and scales. Not in the unnamed namespace, where the
/// compiler would see that no other class can stand behind the interface.
class Counting
{
public:
    virtual ~Counting() = default;
    [[gnu::noinline]] virtual double draw() { return ++_index * 0x1p-32; }
    [[gnu::noinline]] virtual void draw(double* point)
    {
        ++_index;
        for (unsigned int d = 0; d < 4; ++d)
            point[d] = (_index ^ d) * 0x1p-32;
    }

private:
    std::uint32_t _index = 0;
};

}  // namespace VnBench

namespace
{
using VnBench::Counting;
using VnBench::Rounds;

constexpr unsigned int count = 4096;  ///< operations in a round

int rounds = 300;
char const* wanted = "";

/// Prints a row's contestants unless the row was not asked for.
void compare(char const* what, std::vector<std::pair<std::string, Rounds::Measure>> contestants)
{
    if (std::strstr(what, wanted) == nullptr)
        return;
    Rounds row(what, "ns");
    for (auto& [who, measure] : contestants)
        row.add(who, std::move(measure));
    row.run(rounds);
}

/// Times `body(i)` for each operation of a round.
template <class Body>
Rounds::Measure each(Body body)
{
    return [body]() mutable {
        const double whole = VnBench::timeOfEach(1, [&body] {
            for (unsigned int i = 0; i < count; ++i)
                body(i);
            benchmark::ClobberMemory();
        });
        return whole / count;
    };
}

/// Times `body()`, which does all operations of a round.
template <class Body>
Rounds::Measure bulk(Body body)
{
    return [body]() mutable {
        const double whole = VnBench::timeOfEach(1, [&body] {
            body();
            benchmark::ClobberMemory();
        });
        return whole / count;
    };
}

/// Hides an object's class from the compiler, so that a call goes through the interface.
template <class Interface>
Interface* hidden(Interface* object)
{
    Interface* volatile hiding = object;
    return hiding;
}

/// Splitmix64: the same operands in every run.
std::uint64_t nextBits()
{
    static std::uint64_t state = 1;
    std::uint64_t z = state += 0x9E3779B97F4A7C15;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
    return z ^ (z >> 31);
}

double nextNumber()
{
    return static_cast<double>(nextBits() >> 11) * 0x1p-53;
}

/// Operands for a whole round.
template <class Make>
auto made(Make make)
{
    std::vector<decltype(make())> values;
    while (values.size() < count)
        values.push_back(make());
    return values;
}

// ---- intervals ----

// Boost rounds outward by default; here as ours: to nearest, and without checks.
namespace bi = boost::numeric;
using PlainPolicies = bi::interval_lib::policies<bi::interval_lib::rounded_arith_exact<double>,
                                                 bi::interval_lib::checking_base<double>>;
using TheirInterval = bi::interval<double, PlainPolicies>;
using OurInterval = Vn::Interval<double>;

void compareIntervals()
{
    static const auto bounds = made([] {
        const double a = nextNumber() * 4 - 2, b = nextNumber();
        return std::pair(a, a + b);
    });
    static const auto divisors = made([] {
        const double a = nextNumber() + 0.5, b = nextNumber();
        return nextBits() % 2 == 0 ? std::pair(a, a + b) : std::pair(-a - b, -a);
    });
    static std::vector<OurInterval> ours, oursBelow, oursResult(count, OurInterval(0));
    static std::vector<TheirInterval> theirs, theirsBelow, theirsResult(count);
    static std::vector<double> points = made([] { return nextNumber() * 4 - 2; });
    static std::vector<unsigned char> found(count);
    for (unsigned int i = 0; i < count; ++i) {
        ours.emplace_back(bounds[i].first, bounds[i].second);
        theirs.emplace_back(bounds[i].first, bounds[i].second);
        oursBelow.emplace_back(divisors[i].first, divisors[i].second);
        theirsBelow.emplace_back(divisors[i].first, divisors[i].second);
    }
    static constexpr char const* peer = "boost::numeric::interval";
    auto const row = [](char const* what, auto const& oursDo, auto const& theirsDo) {
        compare(what, {{"ours", each([oursDo](unsigned int i) {
                            OurInterval value = ours[i];
                            oursDo(value, oursBelow[i]);
                            oursResult[i] = value;
                        })},
                       {peer, each([theirsDo](unsigned int i) {
                            TheirInterval value = theirs[i];
                            theirsDo(value, theirsBelow[i]);
                            theirsResult[i] = value;
                        })}});
    };
    row(
        "interval +=", [](auto& a, auto const& b) { a += b; }, [](auto& a, auto const& b) { a += b; });
    row(
        "interval *=", [](auto& a, auto const& b) { a *= b; }, [](auto& a, auto const& b) { a *= b; });
    row(
        "interval /=", [](auto& a, auto const& b) { a /= b; }, [](auto& a, auto const& b) { a /= b; });
    compare("interval holds a point",
            {{"ours", each([](unsigned int i) { found[i] = ours[i].contains(points[i]); })},
             {peer, each([](unsigned int i) { found[i] = bi::in(points[i], theirs[i]); })}});
}

// ---- fractions and stream time ----

__extension__ using Wide = __int128;

struct Terms
{
    int numerator, denominator;
};

Terms usualRate()
{
    static constexpr Terms rates[] = {{24000, 1001}, {24, 1},    {25, 1},    {30000, 1001}, {30, 1},    {50, 1},
                                      {60000, 1001}, {44100, 1}, {48000, 1}, {96000, 1},    {90000, 1}, {1000, 1}};
    return rates[nextBits() % std::size(rates)];
}

void compareRationals()
{
    using Theirs = boost::rational<std::int64_t>;
    static const auto terms = made([] {
        return Terms{static_cast<int>(1 + nextBits() % 100000), static_cast<int>(1 + nextBits() % 100000)};
    });
    static std::vector<Vn::Rational> ours;
    static std::vector<Theirs> theirs;
    static std::vector<unsigned char> less(count);
    for (Terms const& pair : terms) {
        ours.emplace_back(pair.numerator, pair.denominator);
        theirs.emplace_back(pair.numerator, pair.denominator);
    }
    compare("fraction <",
            {{"ours", each([](unsigned int i) { less[i] = ours[i] < ours[(i + 1) % count]; })},
             {"boost::rational", each([](unsigned int i) { less[i] = theirs[i] < theirs[(i + 1) % count]; })}});
}

/// What one writes by hand to add counts of two rates: both rescaled in 128 bits to the product of the rates.
struct HandTime
{
    std::int64_t value;
    Terms rate;
};

HandTime sumByHand(HandTime const& a, HandTime const& b)
{
    const Terms rate{a.rate.numerator * b.rate.numerator, a.rate.denominator * b.rate.denominator};
    auto const scaled = [&rate](HandTime const& time) {
        return static_cast<std::int64_t>(static_cast<Wide>(time.value) *
                                         (static_cast<std::int64_t>(time.rate.denominator) * rate.numerator) /
                                         (static_cast<std::int64_t>(time.rate.numerator) * rate.denominator));
    };
    return {scaled(a) + scaled(b), rate};
}

/// The least that the library's rule takes: two usual rates meet at their product or at 1,000,000, without a look at what
/// could wrap, be reduced or be another kind of rate.
HandTime sumAtLeast(HandTime const& a, HandTime const& b)
{
    constexpr std::int64_t limit = 1000000;
    const std::int64_t above = std::int64_t(a.rate.numerator) * b.rate.numerator;
    const int below = a.rate.denominator * b.rate.denominator;
    if (above > limit * below)
        return {a.value * (a.rate.denominator * limit) / a.rate.numerator +
                    b.value * (b.rate.denominator * limit) / b.rate.numerator,
                {limit, 1}};
    auto const times = [](std::int64_t value, Terms const& rate) {
        return rate.denominator == 1 ? value * rate.numerator : value * rate.numerator / 1001;
    };
    return {times(a.value, b.rate) + times(b.value, a.rate), {static_cast<int>(above), below}};
}

void compareTimes()
{
    static const auto values = made([] { return static_cast<std::int64_t>(nextBits() % 3000000000); });
    static const auto rates = made(usualRate);
    static std::vector<Vn::DtTime> equal, mixed, alternating, results(count);
    static std::vector<HandTime> handMixed, handAlternating, handResults(count);
    using Frames = std::chrono::duration<std::int64_t, std::ratio<1, 25>>;
    static std::vector<Frames> frames, frameResults(count);
    for (unsigned int i = 0; i < count; ++i) {
        const Terms alternate = i % 2 == 0 ? Terms{25, 1} : Terms{30000, 1001};
        equal.emplace_back(values[i], 25, 1);
        frames.emplace_back(values[i]);
        mixed.emplace_back(values[i], rates[i].numerator, rates[i].denominator);
        handMixed.push_back({values[i], rates[i]});
        alternating.emplace_back(values[i], alternate.numerator, alternate.denominator);
        handAlternating.push_back({values[i], alternate});
    }
    auto const summed = [](std::vector<Vn::DtTime> const& times) {
        return each([&times](unsigned int i) {
            Vn::DtTime sum = times[i];
            sum += times[(i + 1) % count];
            results[i] = sum;
        });
    };
    auto const byHand = [](std::vector<HandTime> const& times) {
        return each([&times](unsigned int i) { handResults[i] = sumByHand(times[i], times[(i + 1) % count]); });
    };
    auto const atLeast = [](std::vector<HandTime> const& times) {
        return each([&times](unsigned int i) { handResults[i] = sumAtLeast(times[i], times[(i + 1) % count]); });
    };
    compare("DtTime +=, equal rates",
            {{"ours", summed(equal)}, {"std::chrono, fixed rate", each([](unsigned int i) {
                                           Frames sum = frames[i];
                                           sum += frames[(i + 1) % count];
                                           frameResults[i] = sum;
                                       })}});
    compare("DtTime +=, twelve rates", {{"ours", summed(mixed)},
                                        {"128 bits by hand", byHand(handMixed)},
                                        {"floor: the rule unchecked", atLeast(handMixed)}});
    compare("DtTime +=, 25 with 29.97", {{"ours", summed(alternating)},
                                         {"128 bits by hand", byHand(handAlternating)},
                                         {"floor: the rule unchecked", atLeast(handAlternating)}});
    static std::vector<Vn::ArrayPtr<char>> texts;
    static std::vector<std::string> plain;
    for (Vn::DtTime const& time : mixed) {
        texts.emplace_back(Vn::DtTimeUtil::getDtStringFromDtTime(time));
        plain.emplace_back(texts.back());
    }
    compare("time to text",
            {{"ours", each([](unsigned int i) { texts[i] = Vn::DtTimeUtil::getDtStringFromDtTime(mixed[i]); })},
             {"std::to_chars, new[]", each([](unsigned int i) {
                  char text[48];
                  char* end = std::to_chars(text, text + 47, std::int64_t(mixed[i].getCount())).ptr;
                  *end++ = ' ';
                  end = std::to_chars(end, text + 47, mixed[i].getRate().getNumerator()).ptr;
                  *end++ = ' ';
                  end = std::to_chars(end, text + 47, mixed[i].getRate().getDenominator()).ptr;
                  *end++ = '\0';
                  char* const copy = new char[static_cast<std::size_t>(end - text)];
                  std::memcpy(copy, text, static_cast<std::size_t>(end - text));
                  texts[i].reset(copy);
              })}});
    compare("time from text",
            {{"ours", each([](unsigned int i) { results[i] = Vn::DtTimeUtil::getDtTimeFromDtString(texts[i]); })},
             {"std::from_chars", each([](unsigned int i) {
                  char const* const end = plain[i].data() + plain[i].size();
                  std::int64_t value = 0;
                  int numerator = 0, denominator = 0;
                  char const* at = std::from_chars(plain[i].data(), end, value).ptr + 1;
                  at = std::from_chars(at, end, numerator).ptr + 1;
                  std::from_chars(at, end, denominator);
                  handResults[i] = {value, {numerator, denominator}};
              })}});
}

// ---- samplers ----

struct Gsl
{
    std::unique_ptr<gsl_rng, decltype(&gsl_rng_free)> rng{gsl_rng_alloc(gsl_rng_ran2), &gsl_rng_free};
};

/// A bell over `bins` bins, with an empty one now and then.
std::vector<double> weights(unsigned int bins)
{
    std::vector<double> made;
    for (unsigned int i = 0; i < bins; ++i) {
        const double t = (i + 0.5) / bins * 6 - 3;
        made.push_back(i % 17 == 3 ? 0.0 : std::floor(1000 * std::exp(-t * t / 2)));
    }
    return made;
}

void compareDraws(unsigned int bins)
{
    struct Ours
    {
        explicit Ours(unsigned int bins) : histogram(bins, 0.0, 1.0)
        {
            const std::vector<double> contents = weights(bins);
            for (unsigned int i = 0; i < bins; ++i)
                histogram.addSample((i + 0.5) / bins, contents[i]);
            rng = std::make_unique<Vn::RnHistogramRng<double>>(histogram, &uniform);
        }
        Vn::RnHistogram<double> histogram;
        Vn::RnLecuyerUniformRng<double> uniform;
        std::unique_ptr<Vn::RnHistogramRng<double>> rng;
    };
    struct Theirs
    {
        explicit Theirs(unsigned int bins)
            : histogram(gsl_histogram_alloc(bins), &gsl_histogram_free),
              pdf(gsl_histogram_pdf_alloc(bins), &gsl_histogram_pdf_free)
        {
            const std::vector<double> contents = weights(bins);
            gsl_histogram_set_ranges_uniform(histogram.get(), 0.0, 1.0);
            for (unsigned int i = 0; i < bins; ++i)
                gsl_histogram_accumulate(histogram.get(), (i + 0.5) / bins, contents[i]);
            gsl_histogram_pdf_init(pdf.get(), histogram.get());
        }
        std::unique_ptr<gsl_histogram, decltype(&gsl_histogram_free)> histogram;
        std::unique_ptr<gsl_histogram_pdf, decltype(&gsl_histogram_pdf_free)> pdf;
        Gsl gsl;
    };
    auto const ours = std::make_shared<Ours>(bins);
    auto const theirs = std::make_shared<Theirs>(bins);
    auto const results = std::make_shared<std::vector<double>>(count);
    Vn::RnRng<double>* const any = hidden<Vn::RnRng<double>>(ours->rng.get());
    const std::string name = "draw from " + std::to_string(bins) + " bins";
    compare(name.c_str(), {{"ours", each([ours, results, any](unsigned int i) { (*results)[i] = (*any)(); })},
                           {"GSL", each([theirs, results](unsigned int i) {
                                (*results)[i] = gsl_histogram_pdf_sample(theirs->pdf.get(),
                                                                         gsl_rng_uniform(theirs->gsl.rng.get()));
                            })}});
    compare((name + ", bulk").c_str(),
            {{"ours", bulk([ours, results, any] { any->getSequence(count, results->data()); })},
             {"GSL", each([theirs, results](unsigned int i) {
                  (*results)[i] =
                      gsl_histogram_pdf_sample(theirs->pdf.get(), gsl_rng_uniform(theirs->gsl.rng.get()));
              })}});
}

template <class T>
void compareGaussian(char const* what)
{
    struct Ours
    {
        Vn::RnLecuyerUniformRng<T> uniform;
        Vn::RnGaussianRng<T> rng{&uniform};
    };
    struct Theirs
    {
        boost::random::mt19937 engine;
        boost::random::normal_distribution<T> normal;
    };
    auto const ours = std::make_shared<Ours>();
    auto const theirs = std::make_shared<Theirs>();
    auto const results = std::make_shared<std::vector<T>>(count);
    // A pair of samples takes 4 / pi pairs of uniform numbers and one logarithm, whatever the rest costs.
    auto const uniform = std::make_shared<Vn::RnLecuyerUniformRng<T>>();
    auto const floor = [uniform, results] {
        constexpr unsigned int uniforms = count * 14 / 11;
        T numbers[uniforms];
        uniform->getSequence(uniforms, numbers);
        for (unsigned int i = 0; i < count / 2; ++i)
            (*results)[i] = std::log(numbers[i]);
    };
    compare(what, {{"ours", bulk([ours, results] { ours->rng.getSequence(count, results->data()); })},
                   {"its draws and logarithms alone", bulk(floor)},
                   {"Boost's ziggurat on mt19937",
                    each([theirs, results](unsigned int i) { (*results)[i] = theirs->normal(theirs->engine); })}});
}

void compareDirections()
{
    struct Ours
    {
        Vn::RnHaltonBiRng<double> points;
        Vn::RnUniformSphericalRng<double> rng{&points};
    };
    auto const ours = std::make_shared<Ours>();
    auto const gsl = std::make_shared<Gsl>();
    auto const results = std::make_shared<std::vector<std::array<double, 3>>>(count);
    Vn::RnSphericalRng<double>* const any = hidden<Vn::RnSphericalRng<double>>(&ours->rng);
    compare("direction, single", {{"ours", each([ours, results, any](unsigned int i) {
                                       auto& [x, y, z] = (*results)[i];
                                       any->getSampleXYZ(x, y, z);
                                   })},
                                  {"gsl_ran_dir_3d on ran2", each([gsl, results](unsigned int i) {
                                       auto& [x, y, z] = (*results)[i];
                                       gsl_ran_dir_3d(gsl->rng.get(), &x, &y, &z);
                                   })}});
}

namespace bh = boost::histogram;

/// The least that adding to bins of equal width takes: a division, a bin and a count, of a class that has no virtual
/// operation, and without the call that a number outside or a weight takes.
struct HandBins
{
    void operator()(double x)
    {
        const double place = (x - min) / width * 64.0;
        if (place >= 0.0 && place < 64.0) {
            bins[static_cast<std::size_t>(place)] += 1.0;
            ++hits;
        }
    }

    std::vector<double> bins = std::vector<double>(64);
    double min = 0.0, width = 1.0;
    std::uint32_t hits = 0;
};

/// The same for points.
struct HandBinsBi
{
    void operator()(double x, double y)
    {
        const double xPlace = (x - xMin) / xWidth * 32.0, yPlace = (y - yMin) / yWidth * 32.0;
        if (xPlace >= 0.0 && xPlace < 32.0 && yPlace >= 0.0 && yPlace < 32.0) {
            bins[static_cast<std::size_t>(yPlace) * 32 + static_cast<std::size_t>(xPlace)] += 1.0;
            ++hits;
        }
    }

    std::vector<double> bins = std::vector<double>(1024);
    double xMin = 0.0, yMin = 0.0, xWidth = 1.0, yWidth = 1.0;
    std::uint32_t hits = 0;
};

void compareHistograms()
{
    static const auto numbers = made(nextNumber);
    using Dense = bh::dense_storage<double>;
    const bh::axis::regular<> axis(64, 0.0, 1.0), side(32, 0.0, 1.0);
    Vn::RnUniformHistogram<double> ours(64, 0.0, 1.0);
    Vn::RnUniformHistogramBi<double> oursBi(32, 32, 0.0, 1.0, 0.0, 1.0);
    auto const filled = [](auto histogram) {
        return each([histogram](unsigned int i) mutable { histogram(numbers[i]); });
    };
    auto const filledBi = [](auto histogram) {
        return each([histogram](unsigned int i) mutable { histogram(numbers[i], numbers[count - 1 - i]); });
    };
    compare("uniform histogram, single add",
            {{"ours", each([ours](unsigned int i) mutable { ours.addSample(numbers[i], 1.0); })},
             {"Boost.Histogram", filled(bh::make_histogram(axis))},
             {"Boost.Histogram, doubles", filled(bh::make_histogram_with(Dense(), axis))},
             {"floor: a division and a count", filled(HandBins())}});
    compare("2-D histogram, single add",
            {{"ours", each([oursBi](unsigned int i) mutable {
                  oursBi.addSample(numbers[i], numbers[count - 1 - i], 1.0);
              })},
             {"Boost.Histogram", filledBi(bh::make_histogram(side, side))},
             {"Boost.Histogram, doubles", filledBi(bh::make_histogram_with(Dense(), side, side))},
             {"floor: two divisions, a count", filledBi(HandBinsBi())}});
}

void compareSequences()
{
    auto const corput = std::make_shared<Vn::RnVanDerCorputRng<double>>();
    auto const niederreiter = std::make_shared<Vn::RnNiederreiterMultiRng<double>>();
    auto const boosts = std::make_shared<boost::random::niederreiter_base2>(4);
    auto const results = std::make_shared<std::vector<std::array<double, 4>>>(count);
    const std::shared_ptr<gsl_qrng> halton(gsl_qrng_alloc(gsl_qrng_halton, 1), &gsl_qrng_free);
    Vn::RnRng<double>* const anyCorput = hidden<Vn::RnRng<double>>(corput.get());
    Vn::RnMultiRng<double, 4>* const anyNiederreiter = hidden<Vn::RnMultiRng<double, 4>>(niederreiter.get());
    auto const counting = std::make_shared<Counting>();
    Counting* const anyCounting = hidden<Counting>(counting.get());
    compare("van der Corput, single",
            {{"ours", each([corput, results, anyCorput](unsigned int i) { (*results)[i][0] = (*anyCorput)(); })},
             {"GSL Halton 1-D",
              each([halton, results](unsigned int i) { gsl_qrng_get(halton.get(), (*results)[i].data()); })},
             {"floor: a call that counts",
              each([counting, results, anyCounting](unsigned int i) { (*results)[i][0] = anyCounting->draw(); })}});
    compare("Niederreiter 4-D, single",
            {{"ours", each([niederreiter, results, anyNiederreiter](unsigned int i) {
                  anyNiederreiter->getSample((*results)[i].data());
              })},
             {"Boost niederreiter_base2", each([boosts, results](unsigned int i) {
                  for (double& coordinate : (*results)[i])
                      coordinate = static_cast<double>((*boosts)()) * 0x1p-64;
              })},
             {"floor: a call that counts", each([counting, results, anyCounting](unsigned int i) {
                  anyCounting->draw((*results)[i].data());
              })}});
    auto const adapter = std::make_shared<Vn::RnStdUniformRng<double>>(1);
    auto const plain = std::make_shared<std::vector<double>>(count);
    compare("rand adapter, bulk",
            {{"ours", bulk([adapter, plain] { adapter->getSequence(count, plain->data()); })},
             {"a loop over rand()",
              each([plain](unsigned int i) { (*plain)[i] = static_cast<double>(std::rand()) * (1.0 / RAND_MAX); })},
             {"bare rand()", each([](unsigned int) { benchmark::DoNotOptimize(std::rand()); })}});
}
}  // namespace

int main(int argc, char** argv)
{
    if (argc > 1)
        rounds = std::max(1, std::atoi(argv[1]));
    if (argc > 2)
        wanted = argv[2];
    Rounds::printHead();
    compareIntervals();
    compareRationals();
    compareTimes();
    for (unsigned int bins : {16u, 64u, 1000u, 4096u})
        compareDraws(bins);
    compareGaussian<double>("Gaussian, bulk, double");
    compareGaussian<float>("Gaussian, bulk, float");
    compareDirections();
    compareHistograms();
    compareSequences();
    return 0;
}
