#include "sources.h"

#include <base/rncosinehemisphericalrng.h>
#include <base/rnhaltonbirng.h>
#include <base/rnhammersleybirng.h>
#include <base/rnlecuyeruniformrng.h>
#include <base/rnniederreitermultirng.h>
#include <base/rnnumrecuniformrng.h>
#include <base/rnseparablemultirng.h>
#include <base/rnstduniformrng.h>
#include <base/rnuniformsphericalrng.h>
#include <base/rnvandercorputrng.h>

#include <cstdint>

namespace Skylight
{
namespace
{
/// A number from 0 to below 1 that looks like chance (S. Vigna's splitmix64).
float hashed(std::uint64_t n)
{
    n *= 0x9E3779B97F4A7C15;
    n = (n ^ (n >> 30)) * 0xBF58476D1CE4E5B9;
    n = (n ^ (n >> 27)) * 0x94D049BB133111EB;
    return static_cast<float>(static_cast<std::int32_t>((n ^ (n >> 31)) >> 40)) * 0x1p-24f;
}

float wrapped(float x)
{
    return x < 1.0f ? x : x - 1.0f;
}

/// Pairs of numbers from a random source.
template <class Uniform>
class RandomSource : public PixelSource
{
public:
    char const* getName() const override { return _uniform.getName(); }

protected:
    void draw(float& x, float& y) override { _pairs.getSample(x, y); }
    void jump(unsigned int) override {}

private:
    Uniform _uniform;
    Vn::RnSeparableBiRng<float> _pairs{&_uniform};
};

/// Base 2 on both axes, the second one run ahead: what a sequence gives that isn't made for two dimensions.
class OneDimensionalSource : public PixelSource
{
public:
    OneDimensionalSource() { OneDimensionalSource::jump(0); }
    char const* getName() const override { return _first.getName(); }

protected:
    void draw(float& x, float& y) override
    {
        x = _first();
        y = _second();
    }
    void jump(unsigned int index) override
    {
        _first.restart(index);
        _second.restart(index + 7);
    }

private:
    Vn::RnVanDerCorputRng<float> _first, _second;
};

class HaltonSource : public PixelSource
{
public:
    char const* getName() const override { return _points.getName(); }

protected:
    void draw(float& x, float& y) override { _points.getSample(x, y); }
    void jump(unsigned int index) override { _points.restart(index); }

private:
    Vn::RnHaltonBiRng<float> _points;
};

class HammersleySource : public PixelSource
{
public:
    explicit HammersleySource(unsigned int length) : _points(length) {}
    char const* getName() const override { return _points.getName(); }

protected:
    void draw(float& x, float& y) override { _points.getSample(x, y); }
    void jump(unsigned int index) override { _points.restart(index); }

private:
    Vn::RnHammersleyBiRng<float> _points;
};

class NiederreiterSource : public PixelSource
{
public:
    char const* getName() const override { return _points.getName(); }

protected:
    void draw(float& x, float& y) override
    {
        float point[4];
        _points.getSample(point);
        x = point[0];
        y = point[1];
    }
    void jump(unsigned int index) override { _points.restart(index); }

private:
    Vn::RnNiederreiterMultiRng<float> _points;
};
}  // namespace

std::vector<std::string> PixelSource::getNames()
{
    return {"lecuyer", "shuffled", "system", "vandercorput", "halton", "hammersley", "niederreiter"};
}

std::unique_ptr<PixelSource> PixelSource::make(std::string const& name, unsigned int length)
{
    if (name == "lecuyer")
        return std::make_unique<RandomSource<Vn::RnLecuyerUniformRng<float>>>();
    if (name == "shuffled")
        return std::make_unique<RandomSource<Vn::RnNumRecUniformRng<float>>>();
    if (name == "system")
        return std::make_unique<RandomSource<Vn::RnStdUniformRng<float>>>();
    if (name == "vandercorput")
        return std::make_unique<OneDimensionalSource>();
    if (name == "hammersley")
        return std::make_unique<HammersleySource>(length);
    if (name == "niederreiter")
        return std::make_unique<NiederreiterSource>();
    return std::make_unique<HaltonSource>();
}

void PixelSource::goTo(unsigned int pixel, unsigned int first)
{
    _xOffset = hashed(2 * (std::uint64_t(pixel) + 1));
    _yOffset = hashed(2 * (std::uint64_t(pixel) + 1) + 1);
    jump(first);
}

void PixelSource::getSample(float& x, float& y)
{
    draw(x, y);
    x = wrapped(x + _xOffset);
    y = wrapped(y + _yOffset);
}

void PixelSource::getSequence(unsigned int n, float* x, float* y)
{
    // Point by point: a Hammersley source would begin its set anew in each sequence.
    for (unsigned int i = 0; i < n; ++i)
        PixelSource::getSample(x[i], y[i]);
}

void PixelSource::getEfficientWidth(float& x, float& y) const
{
    x = y = 1.0f;
}

void PixelSource::getEfficientMin(float& x, float& y) const
{
    x = y = 0.0f;
}

void PixelSource::getEfficientMax(float& x, float& y) const
{
    x = y = 1.0f;
}

float PixelSource::getEfficientFraction() const
{
    return 1.0f;
}

float PixelSource::getPdf(float x, float y) const
{
    return x >= 0.0f && x < 1.0f && y >= 0.0f && y < 1.0f ? 1.0f : 0.0f;
}

void PixelSource::restart()
{
    jump(0);
}

std::vector<std::string> getSamplerNames()
{
    return {"cosine", "hemisphere", "sphere"};
}

std::unique_ptr<Vn::RnSphericalRng<float>> makeSampler(std::string const& name, Vn::RnBiRng<float>* source)
{
    if (name == "hemisphere")
        return std::make_unique<Vn::RnUniformHemisphericalRng<float>>(source);
    if (name == "sphere")
        return std::make_unique<Vn::RnUniformSphericalRng<float>>(source);
    return std::make_unique<Vn::RnCosineHemisphericalRng<float>>(source);
}

}  // namespace Skylight
