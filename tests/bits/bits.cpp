// Prints a hash of each result whose bits are the same on every platform, processor and compiler (docs/versions.md, "Bits").
//
//     bits          prints the lines of tests/reference/bits.txt
//     bits FILE     fails if they are others than those of the file
//
// The tables of tests/reference, which other tests use, are an independent reckoning of some numbers of each kind. The hashes here
// say nothing about what is right; they run over many more numbers and tell that all trees have the same ones.
//
// Left out is what depends on the platform's C library: theta of a direction, the Gaussian density, and RnStdUniformRng. A hash
// takes the bits of a number from its least significant byte on, whatever their order in memory.
#include <base/dttime.h>
#include <base/dttimeutil.h>
#include <base/exbase.h>
#include <base/rncosinehemisphericalrng.h>
#include <base/rngaussianrng.h>
#include <base/rnhaltonbirng.h>
#include <base/rnhaltonmultirng.h>
#include <base/rnhammersleybirng.h>
#include <base/rnhammersleymultirng.h>
#include <base/rnhistogrambi.h>
#include <base/rnhistogrambirng.h>
#include <base/rnhistogramrng.h>
#include <base/rnhistogramspherical.h>
#include <base/rnlecuyeruniformrng.h>
#include <base/rnmexicanhatrng.h>
#include <base/rnniederreitermultirng.h>
#include <base/rnnumrecuniformrng.h>
#include <base/rnseparablemultirng.h>
#include <base/rnuniformsphericalrng.h>
#include <base/rnvandercorputrng.h>

#include <bit>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <iterator>
#include <limits>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

namespace
{
constexpr unsigned int count = 4096;

std::ostringstream lines;

/// FNV-1a in 64 bits.
class Hash
{
public:
    void addByte(unsigned char byte) { _value = (_value ^ byte) * 0x100000001B3u; }

    template <class Integer>
    void addInteger(Integer value)
    {
        const auto bits = static_cast<std::uint64_t>(static_cast<std::make_unsigned_t<Integer>>(value));
        for (unsigned int i = 0; i < sizeof(Integer); ++i)
            addByte(static_cast<unsigned char>(bits >> (8 * i)));
    }

    void add(float value) { addInteger(std::bit_cast<std::uint32_t>(value)); }
    void add(double value) { addInteger(std::bit_cast<std::uint64_t>(value)); }

    void add(std::string const& text)
    {
        for (char character : text)
            addByte(static_cast<unsigned char>(character));
    }

    std::uint64_t get() const { return _value; }

private:
    std::uint64_t _value = 0xCBF29CE484222325u;
};

void print(std::string const& what, Hash const& hash)
{
    char digits[17];
    std::snprintf(digits, sizeof digits, "%016llx", static_cast<unsigned long long>(hash.get()));
    lines << digits << ' ' << what << '\n';
}

template <class T>
char const* typeName()
{
    return sizeof(T) == sizeof(float) ? "float" : "double";
}

/// A stream of `width` numbers at a time: some drawn singly, and the next ones in bulk.
template <class T, class Single, class Bulk>
void printStream(std::string const& name, unsigned int width, Single const& single, Bulk const& bulk)
{
    Hash singles;
    for (unsigned int i = 0; i < count; ++i) {
        T sample[4];
        single(sample);
        for (unsigned int d = 0; d < width; ++d)
            singles.add(sample[d]);
    }
    print(std::string(typeName<T>()) + ' ' + name + ", single", singles);

    std::vector<T> values(4 * count);
    T* pointers[4] = {&values[0], &values[count], &values[2 * count], &values[3 * count]};
    bulk(pointers);
    Hash bulks;
    for (unsigned int i = 0; i < width * count; ++i)
        bulks.add(values[i]);
    print(std::string(typeName<T>()) + ' ' + name + ", bulk", bulks);
}

template <class T>
void printNumbers(std::string const& name, Vn::RnRng<T>&& rng)
{
    printStream<T>(
        name, 1, [&rng](T* sample) { sample[0] = rng(); },
        [&rng](T** arrays) { rng.getSequence(count, arrays[0]); });
}

template <class T>
void printPairs(std::string const& name, Vn::RnBiRng<T>&& rng)
{
    printStream<T>(
        name, 2, [&rng](T* sample) { rng.getSample(sample[0], sample[1]); },
        [&rng](T** arrays) { rng.getSequence(count, arrays[0], arrays[1]); });
}

template <class T, int N>
void printPoints(std::string const& name, Vn::RnMultiRng<T, N>&& rng)
{
    printStream<T>(
        name + ' ' + std::to_string(N), N, [&rng](T* sample) { rng.getSample(sample); },
        [&rng](T** arrays) { rng.getSequence(count, arrays); });
}

template <class T>
void printDirections(std::string const& name, Vn::RnSphericalRng<T>&& rng)
{
    printStream<T>(
        name + " x y z", 3, [&rng](T* sample) { rng.getSampleXYZ(sample[0], sample[1], sample[2]); },
        [&rng](T** arrays) { rng.getSequenceXYZ(count, arrays[0], arrays[1], arrays[2]); });
    printStream<T>(
        name + " cosine phi", 2, [&rng](T* sample) { rng.getSampleCosine(sample[0], sample[1]); },
        [&rng](T** arrays) { rng.getSequenceCosine(count, arrays[0], arrays[1]); });
    T theta[count];
    printStream<T>(
        name + " phi", 1, [&](T* sample) { rng.getSampleAngles(theta[0], sample[0]); },
        [&](T** arrays) { rng.getSequenceAngles(count, theta, arrays[0]); });
}

template <class T>
void printSamplers()
{
    printNumbers<T>("L'Ecuyer", Vn::RnLecuyerUniformRng<T>());
    printNumbers<T>("L'Ecuyer of a seed", Vn::RnLecuyerUniformRng<T>(3, 4711));
    printNumbers<T>("NumRec", Vn::RnNumRecUniformRng<T>());
    printNumbers<T>("NumRec of a seed", Vn::RnNumRecUniformRng<T>(4711));
    printNumbers<T>("Van der Corput", Vn::RnVanDerCorputRng<T>());
    printNumbers<T>("Van der Corput 10", Vn::RnVanDerCorputRng<T>(10));

    Vn::RnLecuyerUniformRng<T> uniform;
    Vn::RnNumRecUniformRng<T> other;
    printNumbers<T>("Gauss", Vn::RnGaussianRng<T>(&uniform));
    printNumbers<T>("Gauss of 5, 3", Vn::RnGaussianRng<T>(&uniform, T(5), T(3)));
    printNumbers<T>("Mexican hat", Vn::RnMexicanHatRng<T>(&uniform));
    printNumbers<T>("Mexican hat of 5, 3", Vn::RnMexicanHatRng<T>(&uniform, T(5), T(3)));

    printPairs<T>("Halton pairs", Vn::RnHaltonBiRng<T>());
    printPairs<T>("Halton pairs of 5, 7", Vn::RnHaltonBiRng<T>(5, 7));
    printPairs<T>("Hammersley pairs", Vn::RnHammersleyBiRng<T>(2 * count));
    printPairs<T>("separable pairs", Vn::RnSeparableBiRng<T>(&uniform));
    printPairs<T>("asymmetrical pairs", Vn::RnAsymmetricalSeparableBiRng<T>(&uniform, &other));

    printPoints<T, 2>("Halton", Vn::RnHaltonMultiRng<T, 2>());
    printPoints<T, 3>("Halton", Vn::RnHaltonMultiRng<T, 3>());
    printPoints<T, 2>("Hammersley", Vn::RnHammersleyMultiRng<T, 2>(2 * count));
    printPoints<T, 3>("Hammersley", Vn::RnHammersleyMultiRng<T, 3>(2 * count));
    printPoints<T, 4>("Niederreiter", Vn::RnNiederreiterMultiRng<T>());
    printPoints<T, 3>("separable", Vn::RnSeparableMultiRng<T, 3>(&uniform));

    Vn::RnHaltonBiRng<T> pairs;
    printDirections<T>("sphere", Vn::RnUniformSphericalRng<T>(&pairs));
    printDirections<T>("hemisphere", Vn::RnUniformHemisphericalRng<T>(&pairs));
    printDirections<T>("cosine hemisphere", Vn::RnCosineHemisphericalRng<T>(&pairs));
}

/// Both dumps of a histogram, which are texts, and those of its bins as numbers.
template <class T, class Histogram>
void printDumps(std::string const& name, Histogram const& histogram)
{
    std::ostringstream dump, scene;
    histogram.dump(dump);
    histogram.dumpInventor(scene);
    Hash dumps, scenes;
    dumps.add(dump.str());
    scenes.add(scene.str());
    print(std::string(typeName<T>()) + ' ' + name + ", dump", dumps);
    print(std::string(typeName<T>()) + ' ' + name + ", scene", scenes);
}

template <class T>
void printHistograms()
{
    Vn::RnLecuyerUniformRng<T> uniform;
    Vn::RnGaussianRng<T> gauss(&uniform);
    const T edges[] = {T(-4), T(-1), T(-0.25), T(0), T(0.125), T(2), T(5)};
    Vn::RnUniformHistogram<T> even(40, T(-4), T(4));
    Vn::RnHistogram<T> uneven(6, edges);
    even.addSamples(gauss, count);
    uneven.addSamples(gauss, count);
    printDumps<T>("even histogram", even);
    printDumps<T>("uneven histogram", uneven);
    printNumbers<T>("even histogram", Vn::RnHistogramRng<T>(even, &uniform));
    printNumbers<T>("uneven histogram", Vn::RnHistogramRng<T>(uneven, &uniform));

    Vn::RnSeparableBiRng<T> pairs(&gauss);
    Vn::RnUniformHistogramBi<T> plane(20, 10, T(-4), T(4), T(-3), T(3));
    Vn::RnHistogramBi<T> unevenPlane(6, 6, edges, edges);
    plane.addSamples(pairs, count);
    unevenPlane.addSamples(pairs, count);
    printDumps<T>("plane histogram", plane);
    printDumps<T>("uneven plane histogram", unevenPlane);
    printPairs<T>("plane histogram", Vn::RnHistogramBiRng<T>(plane, &uniform));
    printPairs<T>("uneven plane histogram", Vn::RnHistogramBiRng<T>(unevenPlane, &uniform));

    Vn::RnHaltonBiRng<T> points;
    Vn::RnUniformSphericalRng<T> directions(&points);
    Vn::RnCosineHemisphericalRng<T> upwards(&points);
    Vn::RnHistogramSpherical<T> sphere(8, 16);
    Vn::RnHistogramHemispherical<T> hemisphere(8, 16);
    sphere.addSamples(directions, count);
    hemisphere.addSamples(upwards, count);
    printDumps<T>("sphere histogram", sphere);
    printDumps<T>("hemisphere histogram", hemisphere);
}

/// Positions of any size at rates that streams have, taken from a sampler's bits.
class Positions
{
public:
    Vn::DtTime next()
    {
        static constexpr int rates[][2] = {{24, 1},      {25, 1},        {30000, 1001}, {48000, 1},
                                           {44100, 1},   {24000, 1001},  {1, 1},        {90000, 1},
                                           {1, 1000000}, {27000000, 11}, {-25, 2},      {2147483647, 3}};
        const std::uint64_t bits = draw();
        const std::uint64_t pick = draw();
        const auto index = static_cast<std::int64_t>(bits) >> (pick & 63);
        int const(&rate)[2] = rates[(pick >> 8) % std::size(rates)];
        return Vn::DtTime(Vn::DtTimeIndex(index), rate[0], rate[1]);
    }

private:
    /// Marsaglia's xorshift: the positions are no sampler's concern.
    std::uint64_t draw()
    {
        _state ^= _state << 13;
        _state ^= _state >> 7;
        _state ^= _state << 17;
        return _state;
    }

    std::uint64_t _state = 88172645463325252u;
};

void add(Hash& hash, Vn::DtTime const& time)
{
    hash.addInteger(std::int64_t(time.getCount()));
    hash.addInteger(time.getRate().getNumerator());
    hash.addInteger(time.getRate().getDenominator());
}

/// What an operation on two positions gives, or the reason why it gives nothing.
template <class Operation>
void printTimes(std::string const& name, Operation const& operation)
{
    Positions positions;
    Hash hash;
    for (unsigned int i = 0; i < count; ++i) {
        const Vn::DtTime left = positions.next(), right = positions.next();
        try {
            operation(hash, left, right);
        } catch (Vn::ExBase const& failure) {
            hash.add(std::string(failure.getReason()));
        }
    }
    print("time " + name, hash);
}

void printExactNumbers()
{
    using Vn::DtTime;
    using Vn::DtTimeUtil;
    printTimes("sum", [](Hash& hash, DtTime const& a, DtTime const& b) { add(hash, a + b); });
    printTimes("difference", [](Hash& hash, DtTime const& a, DtTime const& b) { add(hash, a - b); });
    printTimes("product", [](Hash& hash, DtTime const& a, DtTime const& b) { add(hash, a * b); });
    // By no zero, which ends the program on some processors; at a common rate a count may wrap to it.
    printTimes("quotient", [](Hash& hash, DtTime const& a, DtTime const& b) {
        add(hash, a / Vn::DtTimeIndex(std::int64_t(b.getCount()) | 1));
    });
    printTimes("remainder", [](Hash& hash, DtTime const& a, DtTime const& b) {
        add(hash, a % Vn::DtTimeIndex(std::int64_t(b.getCount()) | 1));
    });
    printTimes("order", [](Hash& hash, DtTime const& a, DtTime const& b) {
        hash.addByte(static_cast<unsigned char>((a < b) + 2 * (a == b)));
    });
    printTimes("at another rate",
               [](Hash& hash, DtTime const& a, DtTime const& b) { add(hash, a.convertRate(b.getRate())); });
    printTimes("as text", [](Hash& hash, DtTime const& a, DtTime const&) {
        hash.add(std::string(DtTimeUtil::getDtStringFromDtTime(a).get()));
    });
    printTimes("in seconds, float",
               [](Hash& hash, DtTime const& a, DtTime const&) { hash.add(DtTimeUtil::getSecondsFloat(a)); });
    printTimes("in seconds, double",
               [](Hash& hash, DtTime const& a, DtTime const&) { hash.add(DtTimeUtil::getSecondsDouble(a)); });
    printTimes("from seconds", [](Hash& hash, DtTime const& a, DtTime const& b) {
        const double seconds = DtTimeUtil::getSecondsDouble(a);
        if (seconds > -1e6 && seconds < 1e6)
            add(hash, DtTimeUtil::getDtTimeFromSeconds(b.getRate(), seconds));
    });
}

/// Fails with the first line that differs.
int compare(std::string const& printed, char const* path)
{
    std::ifstream file(path);
    std::istringstream ours(printed);
    std::string expected, found;
    for (int number = 1;; ++number) {
        const bool isExpected = static_cast<bool>(std::getline(file, expected));
        const bool isFound = static_cast<bool>(std::getline(ours, found));
        if (!isExpected && !isFound)
            return number > 1 ? 0 : 1;
        if (!isExpected || !isFound || expected != found) {
            std::cout << path << ":" << number << ": '" << (isExpected ? expected : "") << "', and here '"
                      << (isFound ? found : "") << "'\n";
            return 1;
        }
    }
}
}  // namespace

int main(int argc, char** argv)
{
    printSamplers<float>();
    printSamplers<double>();
    printHistograms<float>();
    printHistograms<double>();
    printExactNumbers();
    if (argc > 1)
        return compare(lines.str(), argv[1]);
    std::cout << lines.str();
    return std::cout.flush() ? 0 : 1;
}
