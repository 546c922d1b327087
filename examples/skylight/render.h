#pragma once

#include "crew.h"
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
    /// directions that a pixel takes in all passes together. `threads` share the work, with the same result; a random source
    /// takes one thread alone.
    Render(unsigned int width, std::string const& source, std::string const& sampler, unsigned int samples,
           unsigned int threads);

    /// Adds `count` directions to each pixel, starting with number `first`. Traced as the level "Skylight".
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

    /// What a thread has for itself.
    struct Tool
    {
        std::unique_ptr<PixelSource> source;
        std::unique_ptr<Vn::RnSphericalRng<float>> sampler;
        std::vector<float> x, y, z;
    };

    void addRow(Tool& tool, unsigned int row, unsigned int first, unsigned int count);
    static Vec gather(Tool& tool, Pixel const& pixel, unsigned int count);

    unsigned int _width;
    unsigned int _height;
    unsigned int _done = 0;
    std::vector<Pixel> _pixels;
    std::vector<Tool> _tools;
    Crew _crew;
};

/// The root of the mean squared difference between two pictures of equal size.
double differenceOf(std::vector<Vec> const& left, std::vector<Vec> const& right);

/// A hash of a picture's bits (FNV-1a). Equal pictures have equal hashes.
std::uint64_t fingerprintOf(std::vector<Vec> const& light);

}  // namespace Skylight
