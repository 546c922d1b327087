#pragma once

#include <base/rnbirng.h>
#include <base/rnsphericalrng.h>

#include <memory>
#include <string>
#include <vector>

namespace Skylight
{

/// A source of points of the unit square for one pixel after the other: points of one sequence, or set, moved by an offset of
/// the pixel's own and wrapped round, so that neighbours don't share their error (R. Cranley and T. N. L. Patterson,
/// Randomization of number theoretic methods for multiple integration, SIAM J. Numer. Anal. 13, 1976).
class PixelSource : public Vn::RnBiRng<float>
{
public:
    /// The names that make() knows.
    static std::vector<std::string> getNames();

    /// A source by its name; `length` is the number of points that a pixel will take in all.
    static std::unique_ptr<PixelSource> make(std::string const& name, unsigned int length);

    /// Goes to a pixel's points from number `first` on. A random source has no such place and goes on.
    void goTo(unsigned int pixel, unsigned int first);

    void getSample(float& x, float& y) override;
    void getSequence(unsigned int n, float* x, float* y) override;
    void getEfficientWidth(float& x, float& y) const override;
    void getEfficientMin(float& x, float& y) const override;
    void getEfficientMax(float& x, float& y) const override;
    float getEfficientFraction() const override;
    float getPdf(float x, float y) const override;
    void restart() override;

protected:
    /// The sequence's own next point, and a jump in it.
    virtual void draw(float& x, float& y) = 0;
    virtual void jump(unsigned int index) = 0;

private:
    float _xOffset = 0.0f;
    float _yOffset = 0.0f;
};

/// A sampler of directions, by one of getSamplerNames(), over a source that must outlive it.
std::unique_ptr<Vn::RnSphericalRng<float>> makeSampler(std::string const& name, Vn::RnBiRng<float>* source);
std::vector<std::string> getSamplerNames();

}  // namespace Skylight
