#pragma once

#include "sources.h"
#include "world.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Skylight
{

/// A picture that gathers light pass by pass. Each pass adds the same number of directions to every pixel.
class Render
{
public:
    /// `width` in pixels; the height is 5/8 of it. `source` and `sampler` are names from sources.h. `samples` is the number of
    /// directions that a pixel takes in all passes together.
    Render(unsigned int width, std::string const& source, std::string const& sampler, unsigned int samples);

    /// Adds `count` directions to each pixel, starting with number `first`.
    void addPass(unsigned int first, unsigned int count);

    unsigned int getWidth() const { return _width; }
    unsigned int getHeight() const { return _height; }
    std::size_t getPixelCount() const { return _pixels.size(); }

    /// The light of each pixel so far, row by row from the top.
    std::vector<Vec> getLight() const;

    /// getLight() as bytes of red, green and blue, brightened for a screen.
    std::vector<std::uint8_t> getBytes() const;

private:
    struct Pixel
    {
        Hit hit;
        Vec sum;  ///< over all directions; the colour of the sky where the ray hit nothing
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

/// The root of the mean squared difference between two pictures of equal size.
double differenceOf(std::vector<Vec> const& left, std::vector<Vec> const& right);

/// A hash of a picture's bits (FNV-1a). Equal pictures have equal hashes.
std::uint64_t fingerprintOf(std::vector<Vec> const& light);

}  // namespace Skylight
