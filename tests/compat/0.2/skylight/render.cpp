#include "render.h"

#include <bit>
#include <cmath>

namespace Skylight
{

Render::Render(unsigned int width, std::string const& source, std::string const& sampler, unsigned int samples)
    : _width(width),
      _height(width * 5 / 8),
      _source(PixelSource::make(source, samples)),
      _sampler(makeSampler(sampler, _source.get()))
{
    const float aspect = static_cast<float>(_height) / static_cast<float>(_width);
    for (unsigned int row = 0; row < _height; ++row) {
        for (unsigned int column = 0; column < _width; ++column) {
            const float right = (static_cast<float>(column) + 0.5f) * 2.0f / static_cast<float>(_width) - 1.0f;
            const float up = 1.0f - (static_cast<float>(row) + 0.5f) * 2.0f / static_cast<float>(_height);
            const Vec ray = World::getRay(right, up, aspect);
            Pixel pixel{World::meet(World::getEye(), ray), {0, 0, 0}};
            if (!pixel.hit.isThere)
                pixel.sum = World::getSky(ray);
            _pixels.push_back(pixel);
        }
    }
}

void Render::addPass(unsigned int first, unsigned int count)
{
    _x.resize(count);
    _y.resize(count);
    _z.resize(count);
    for (unsigned int i = 0; i < _pixels.size(); ++i) {
        if (!_pixels[i].hit.isThere)
            continue;
        _source->goTo(i, first);
        _pixels[i].sum = _pixels[i].sum + gather(_pixels[i], count);
    }
    _done += count;
}

/// What a matt surface gets of the sky: each direction's light by the cosine law, divided by how dense the sampler makes such
/// directions.
Vec Render::gather(Pixel const& pixel, unsigned int count)
{
    _sampler->getSequenceXYZ(count, _x.data(), _y.data(), _z.data());
    const Frame frame(pixel.hit.normal);
    Vec sum{0, 0, 0};
    for (unsigned int i = 0; i < count; ++i) {
        const float density = _sampler->getPdfXYZ(_x[i], _y[i], _z[i]);
        if (_z[i] <= 0.0f || density <= 0.0f)
            continue;
        const Vec direction = frame.toWorld({_x[i], _y[i], _z[i]});
        if (World::isFree(pixel.hit.point, direction))
            sum = sum + (_z[i] * 0.31830987f / density) * World::getSky(direction);
    }
    return sum;
}

std::vector<Vec> Render::getLight() const
{
    std::vector<Vec> light;
    const float share = _done != 0 ? 1.0f / static_cast<float>(_done) : 0.0f;
    for (Pixel const& pixel : _pixels)
        light.push_back(pixel.hit.isThere ? share * (pixel.hit.colour * pixel.sum) : pixel.sum);
    return light;
}

std::vector<std::uint8_t> Render::getBytes() const
{
    std::vector<std::uint8_t> bytes;
    for (Vec const& light : getLight()) {
        for (float part : {light.x, light.y, light.z}) {
            const float shown = std::sqrt(part * 0.75f) * 255.0f + 0.5f;
            bytes.push_back(static_cast<std::uint8_t>(shown < 255.0f ? shown : 255.0f));
        }
    }
    return bytes;
}

double differenceOf(std::vector<Vec> const& left, std::vector<Vec> const& right)
{
    double sum = 0.0;
    for (std::size_t i = 0; i < left.size(); ++i) {
        const Vec difference = left[i] - right[i];
        sum += static_cast<double>(dot(difference, difference));
    }
    return std::sqrt(sum / (3.0 * static_cast<double>(left.size())));
}

std::uint64_t fingerprintOf(std::vector<Vec> const& light)
{
    std::uint64_t hash = 14695981039346656037u;
    for (Vec const& each : light) {
        for (float part : {each.x, each.y, each.z}) {
            std::uint32_t bits = std::bit_cast<std::uint32_t>(part);
            for (int i = 0; i < 4; ++i, bits >>= 8)
                hash = (hash ^ (bits & 255)) * 1099511628211u;
        }
    }
    return hash;
}

}  // namespace Skylight
