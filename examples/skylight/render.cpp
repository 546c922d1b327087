#include "render.h"

#include <base/trace.h>

#include <algorithm>
#include <atomic>
#include <bit>
#include <cmath>

namespace Skylight
{
namespace
{
/// VN_TRACE_OPTIONS=show=Skylight draws what each thread does.
Vn::TraceLevel& traceLevel = *Vn::Trace::registerLevel("Skylight", __FILE__);

constexpr unsigned int rowsOfBand = 8;  ///< what a thread takes at once
}  // namespace

Render::Render(unsigned int width, std::string const& source, std::string const& sampler, unsigned int samples,
               unsigned int threads)
    : _width(width), _height(width * 5 / 8), _crew(PixelSource::isRandom(source) ? 1 : threads)
{
    while (_tools.size() < _crew.getSize()) {
        Tool tool{PixelSource::make(source, samples), nullptr, {}, {}, {}};
        tool.sampler = makeSampler(sampler, tool.source.get());
        _tools.push_back(std::move(tool));
    }
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

/// The threads take bands of rows until none is left, as a row of sky costs less than one of spheres.
void Render::addPass(unsigned int first, unsigned int count)
{
    for (Tool& tool : _tools)
        for (std::vector<float>* const values : {&tool.x, &tool.y, &tool.z})
            values->resize(count);
    std::atomic<unsigned int> next = 0;
    _crew.run([&](unsigned int number) {
        VN_TRACE_ENTRY(traceLevel, "pass");
        VN_TRACE(traceLevel, "directions " << first << " to " << first + count - 1);
        for (unsigned int row = next.fetch_add(rowsOfBand); row < _height; row = next.fetch_add(rowsOfBand)) {
            VN_TRACE_ENTRY(traceLevel, "band");
            const unsigned int end = std::min(row + rowsOfBand, _height);
            VN_TRACE(traceLevel, "rows " << row << " to " << end - 1);
            for (unsigned int each = row; each < end; ++each)
                addRow(_tools[number], each, first, count);
        }
    });
    _done += count;
}

void Render::addRow(Tool& tool, unsigned int row, unsigned int first, unsigned int count)
{
    for (unsigned int i = row * _width; i < (row + 1) * _width; ++i) {
        if (!_pixels[i].hit.isThere)
            continue;
        tool.source->goTo(i, first);
        _pixels[i].sum = _pixels[i].sum + gather(tool, _pixels[i], count);
    }
}

/// An estimate, by importance sampling, of the light that a matt surface receives: each direction's light times the cosine of
/// its angle, divided by the sampler's density in that direction.
Vec Render::gather(Tool& tool, Pixel const& pixel, unsigned int count)
{
    tool.sampler->getSequenceXYZ(count, tool.x.data(), tool.y.data(), tool.z.data());
    const Frame frame(pixel.hit.normal);
    Vec sum{0, 0, 0};
    for (unsigned int i = 0; i < count; ++i) {
        const float density = tool.sampler->getPdfXYZ(tool.x[i], tool.y[i], tool.z[i]);
        if (tool.z[i] <= 0.0f || density <= 0.0f)
            continue;
        const Vec direction = frame.toWorld({tool.x[i], tool.y[i], tool.z[i]});
        if (World::isFree(pixel.hit.point, direction))
            sum = sum + (tool.z[i] * 0.31830987f / density) * World::getSky(direction);
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
