#pragma once

#include <base/rnbirng.h>
#include <base/rnsphericalrng.h>

#include <memory>
#include <string>
#include <vector>

namespace Skylight
{

/// A source of points in the unit square, used for one pixel after another.
///
/// All pixels take the same points, each shifted by an offset of the pixel's own and wrapped around. Without the shift
/// neighbouring pixels would have the same error, which shows as a pattern (R. Cranley and T. N. L. Patterson, Randomization
/// of number theoretic methods for multiple integration, SIAM J. Numer. Anal. 13, 1976).
class PixelSource : public Vn::RnBiRng<float>
{
public:
    /// The names that make() accepts.
    static std::vector<std::string> getNames();

    /// Makes the source with this name; any other name makes "halton". `length` is the number of points that a pixel will take
    /// in all, which "hammersley" needs beforehand.
    static std::unique_ptr<PixelSource> make(std::string const& name, unsigned int length);

    /// Whether a name stands for a random source. It cannot jump, so its pixels must be drawn in their order.
    static bool isRandom(std::string const& name);

    /// Goes to point number `first` of a pixel. A random source continues its sequence.
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
    /// The next point before the shift, and a jump to point `index`.
    virtual void draw(float& x, float& y) = 0;
    virtual void jump(unsigned int index) = 0;

private:
    float _xOffset = 0.0f;
    float _yOffset = 0.0f;
};

/// Makes the sampler of directions with this name; any other name makes "cosine". The source must outlive it.
std::unique_ptr<Vn::RnSphericalRng<float>> makeSampler(std::string const& name, Vn::RnBiRng<float>* source);

/// The names that makeSampler() accepts.
std::vector<std::string> getSamplerNames();

}  // namespace Skylight
