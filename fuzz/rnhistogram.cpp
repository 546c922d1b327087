// Histograms of any shape, filled with any numbers by any operations, beside a plain model: no sanitizer may say a word, and
// bins and totals are the model's to the bit.
#include <base/rnhaltonbirng.h>
#include <base/rnhistogram.h>
#include <base/rnhistogrambi.h>
#include <base/rnhistogrambirng.h>
#include <base/rnhistogramrng.h>
#include <base/rnhistogramspherical.h>
#include <base/rnvandercorputrng.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <vector>

namespace
{
/// What is left of the input, as values of any type; zeros once it is used up.
class Input
{
public:
    Input(std::uint8_t const* data, std::size_t size) : _data(data), _size(size) {}

    bool isEmpty() const { return _size == 0; }

    template <class Value>
    Value take()
    {
        Value value{};
        const std::size_t count = std::min(sizeof value, _size);
        std::memcpy(&value, _data, count);
        _data += count;
        _size -= count;
        return value;
    }

    /// A number of any kind, or one from 0 to 1.
    template <class T>
    T takeNumber()
    {
        return (take<std::uint8_t>() & 1) != 0 ? take<T>() : static_cast<T>(take<std::uint16_t>()) / T(65535);
    }

private:
    std::uint8_t const* _data;
    std::size_t _size;
};

template <class T>
bool isSame(T a, T b)
{
    return a == b || (std::isnan(a) && std::isnan(b));
}

void require(bool condition)
{
    if (!condition)
        std::abort();
}

/// A source that gives what the input holds.
template <class T>
class InputRng : public Vn::RnRng<T>
{
public:
    explicit InputRng(Input& input) : _input(input) {}

    T operator()() override { return _input.takeNumber<T>(); }
    void getSample(T& sample) override { sample = (*this)(); }
    void getSequence(unsigned int n, T* samples) override { std::generate(samples, samples + n, std::ref(*this)); }
    T getEfficientWidth() const override { return T(1); }
    T getEfficientMin() const override { return T(0); }
    T getEfficientMax() const override { return T(1); }
    T getEfficientFraction() const override { return T(1); }
    T getPdf(T) const override { return T(1); }
    void restart() override {}
    char const* getName() const override { return "Input"; }

private:
    Input& _input;
};

/// The bin of a number by the rules, and -1 for none.
template <class T>
std::int64_t plainBin(Vn::Vector<T> const& edges, bool isUniform, T x)
{
    const std::int64_t bins = static_cast<std::int64_t>(edges.size()) - 1;
    if (!isUniform) {
        const std::int64_t bin = std::upper_bound(edges.begin(), edges.end(), x) - edges.begin() - 1;
        return bin < bins ? bin : -1;
    }
    const T place = std::floor((x - edges.front()) / (edges.back() - edges.front()) * static_cast<T>(bins));
    return place >= T(0) && place < static_cast<T>(bins) ? static_cast<std::int64_t>(place) : -1;
}

template <class T>
void runLine(Input& input)
{
    const unsigned int count = input.take<std::uint8_t>() % 40;
    std::vector<T> edges;
    for (unsigned int i = 0; i <= count; ++i)
        edges.push_back(input.takeNumber<T>());
    const std::uint8_t shape = input.take<std::uint8_t>();
    if ((shape & 1) != 0)
        std::sort(edges.begin(), edges.end(), [](T a, T b) { return a < b || (!std::isnan(a) && std::isnan(b)); });
    const bool isUniform = (shape & 2) != 0;
    Vn::RnUniformHistogram<T> uniform(count, edges.front(), edges.back());
    Vn::RnHistogram<T> byEdges(count, edges.data());
    Vn::RnHistogram<T>& histogram = isUniform ? uniform : byEdges;
    // The search has one answer where the edges ascend; elsewhere it must only stay inside.
    const bool hasModel = isUniform || std::is_sorted(edges.begin(), edges.end());
    const bool isNumbers = std::none_of(edges.begin(), edges.end(), [](T edge) { return std::isnan(edge); });

    std::vector<T> bins(count);
    T total = T(0);
    auto const add = [&](T x, T weight) {
        const std::int64_t bin = plainBin(histogram.getEdges(), isUniform, x);
        if (bin >= 0) {
            bins[static_cast<std::size_t>(bin)] += weight;
            total += weight;
        }
    };
    while (!input.isEmpty()) {
        const std::uint8_t operation = input.take<std::uint8_t>();
        if (operation % 4 == 0) {
            std::fill(bins.begin(), bins.end(), T(0));
            total = T(0);
            histogram.clear();
        } else if (operation % 4 == 1) {
            Vn::RnVanDerCorputRng<T> many(operation), single(operation);
            histogram.addSamples(many, operation * 3u);
            for (unsigned int i = 0; i < operation * 3u; ++i)
                add(single(), T(1));
        } else {
            const T x = input.takeNumber<T>(), weight = input.takeNumber<T>();
            histogram.addSample(x, weight);
            add(x, weight);
        }
    }
    if (hasModel && isNumbers) {
        require(isSame(histogram.getTotal(), total));
        for (unsigned int i = 0; i < count; ++i)
            require(isSame(histogram.getBinValue(i), bins[i]));
    }
    std::ostringstream stream;
    histogram.dump(stream);
    histogram.dumpInventor(stream);
    Input numbers(reinterpret_cast<std::uint8_t const*>(edges.data()), edges.size() * sizeof(T));
    InputRng<T> source(numbers);
    Vn::RnHistogramRng<T> again(histogram, &source);
    for (unsigned int i = 0; i < 20; ++i)
        again.getPdf(again());
}

template <class T>
void runArea(Input& input)
{
    const unsigned int nx = input.take<std::uint8_t>() % 9, ny = input.take<std::uint8_t>() % 9;
    const T xMin = input.takeNumber<T>(), xMax = input.takeNumber<T>();
    const T yMin = input.takeNumber<T>(), yMax = input.takeNumber<T>();
    const bool isUniform = (input.take<std::uint8_t>() & 1) != 0;
    Vn::RnUniformHistogramBi<T> uniform(nx, ny, xMin, xMax, yMin, yMax);
    Vn::RnHistogramBi<T> byEdges(nx, ny, xMin, xMax, yMin, yMax);
    Vn::RnHistogramBi<T>& histogram = isUniform ? uniform : byEdges;
    auto const ascend = [](Vn::Vector<T> const& edges) {
        return std::is_sorted(edges.begin(), edges.end()) &&
               std::none_of(edges.begin(), edges.end(), [](T edge) { return std::isnan(edge); });
    };
    const bool hasModel = isUniform || (ascend(histogram.getXEdges()) && ascend(histogram.getYEdges()));
    std::vector<T> bins(nx * ny);
    T total = T(0);
    auto const add = [&](T x, T y, T weight) {
        const std::int64_t ix = plainBin(histogram.getXEdges(), isUniform, x);
        const std::int64_t iy = plainBin(histogram.getYEdges(), isUniform, y);
        if (ix >= 0 && iy >= 0) {
            bins[static_cast<std::size_t>(iy * nx + ix)] += weight;
            total += weight;
        }
    };
    while (!input.isEmpty()) {
        const std::uint8_t operation = input.take<std::uint8_t>();
        if (operation % 3 == 0) {
            Vn::RnHaltonBiRng<T> many, single;
            histogram.addSamples(many, operation);
            for (unsigned int i = 0; i < operation; ++i) {
                T x, y;
                single.getSample(x, y);
                add(x, y, T(1));
            }
        } else {
            const T x = input.takeNumber<T>(), y = input.takeNumber<T>(), weight = input.takeNumber<T>();
            histogram.addSample(x, y, weight);
            add(x, y, weight);
            T a, b, c, d;
            histogram.getBinValue(operation, static_cast<unsigned int>(x > y));
            histogram.getBinBounds(operation, operation, a, b, c, d);
        }
    }
    if (hasModel) {
        require(isSame(histogram.getTotal(), total));
        for (unsigned int i = 0; i < nx * ny; ++i)
            require(isSame(histogram.getBins()[i], bins[i]));
    }
    std::ostringstream stream;
    histogram.dump(stream);
    histogram.dumpInventor(stream);
    T numbers[] = {xMin, xMax, yMin, yMax};
    Input again(reinterpret_cast<std::uint8_t const*>(numbers), sizeof numbers);
    InputRng<T> source(again);
    Vn::RnHistogramBiRng<T> points(histogram, &source);
    for (unsigned int i = 0; i < 10; ++i) {
        T x, y;
        points.getSample(x, y);
        points.getPdf(x, y);
    }
}

template <class Histogram, class T>
void runDirections(Input& input)
{
    const unsigned int nc = input.take<std::uint8_t>() % 9, np = input.take<std::uint8_t>() % 9;
    Histogram histogram(nc, np);
    T total = T(0);
    while (!input.isEmpty()) {
        const std::uint8_t operation = input.take<std::uint8_t>();
        const T cosine = input.takeNumber<T>(), phi = input.takeNumber<T>(), weight = input.takeNumber<T>();
        unsigned int ic, ip;
        histogram.getBinCosine(cosine, phi, ic, ip);
        if (ic < nc && ip < np)
            total += weight;
        histogram.addSampleCosine(cosine, phi, weight);
        require(isSame(histogram.getTotal(), total));
        histogram.getBinAngles(cosine, phi, ic, ip);
        histogram.getBinValue(operation, ip);
    }
    std::ostringstream stream;
    histogram.dump(stream);
    histogram.dumpInventor(stream);
}

template <class T>
void run(Input& input)
{
    switch (input.take<std::uint8_t>() % 4) {
    case 0:
        return runLine<T>(input);
    case 1:
        return runArea<T>(input);
    case 2:
        return runDirections<Vn::RnHistogramHemispherical<T>, T>(input);
    default:
        return runDirections<Vn::RnHistogramSpherical<T>, T>(input);
    }
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    Input input(data, size);
    if ((input.take<std::uint8_t>() & 1) != 0)
        run<float>(input);
    else
        run<double>(input);
    return 0;
}
