#pragma once

#include "sources.h"
#include "world.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Skylight
{

/// A picture that gathers light pass by pass: each pass adds the same number of directions to every pixel.
class Render
{
public:
    /// `samples` is the number that a pixel takes in all passes together.
    Render(unsigned int width, std::string const& source, std::string const& sampler, unsigned int samples);

    /// Adds the directions from number `first` on.
    void addPass(unsigned int first, unsigned int count);

    unsigned int getWidth() const { return _width; }
    unsigned int getHeight() const { return _height; }
    std::size_t getPixelCount() const { return _pixels.size(); }

    /// The light of each pixel as it is so far.
    std::vector<Vec> getLight() const;

    /// The same as bytes of red, green and blue, row by row from the top.
    std::vector<std::uint8_t> getBytes() const;

private:
    struct Pixel
    {
        Hit hit;
        Vec sum;  ///< over all directions; the sky itself where nothing was hit
    };

    Vec gather(Pixel const& pixel, unsigned int count);

    unsigned int _width;
    unsigned int _height;
    unsigned int _done = 0;
    std::vector<Pixel> _pixels;
    std::unique_ptr<PixelSource> _source;
    std::unique_ptr<Vn::RnSphericalRng<float>> _sampler;
    std::vector<float> _x, _y, _z;
};

/// Root of the mean squared difference of two pictures' light.
double differenceOf(std::vector<Vec> const& left, std::vector<Vec> const& right);

/// A number that tells pictures apart to the bit (FNV-1a).
std::uint64_t fingerprintOf(std::vector<Vec> const& light);

}  // namespace Skylight
