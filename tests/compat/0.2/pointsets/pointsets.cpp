// pointsets FOLDER: draws point sets and scenes of histograms for docs/sampling.md (tools/drawsampling.sh runs it). Each
// sample of that page is a piece of this file.
#include <base/rncosinehemisphericalrng.h>
#include <base/rngaussianrng.h>
#include <base/rnhaltonbirng.h>
#include <base/rnhammersleybirng.h>
#include <base/rnhistogram.h>
#include <base/rnhistogrambi.h>
#include <base/rnhistogramrng.h>
#include <base/rnhistogramspherical.h>
#include <base/rnlecuyeruniformrng.h>
#include <base/rnmexicanhatrng.h>
#include <base/rnniederreitermultirng.h>
#include <base/rnnumrecuniformrng.h>
#include <base/rnseparablemultirng.h>
#include <base/rnuniformsphericalrng.h>

#include <cmath>
#include <cstdio>
#include <exception>
#include <fstream>
#include <functional>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace
{
constexpr int pointCount = 256;
constexpr int side = 150;  ///< of a panel, in pixels
constexpr int gap = 20;

/// A drawing of panels side by side, three in a row.
class Drawing
{
public:
    explicit Drawing(int panels)
    {
        const int rows = (panels + 2) / 3;
        _text << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" << 3 * (side + gap) + gap << "\" height=\""
              << rows * (side + 2 * gap) + gap
              << "\" font-family=\"sans-serif\" font-size=\"11\">\n<rect width=\"100%\" height=\"100%\" "
                 "fill=\"white\"/>\n";
    }

    /// Begins the next panel.
    void open(std::string const& title)
    {
        const int x = gap + _panels % 3 * (side + gap), y = gap + _panels / 3 * (side + 2 * gap);
        ++_panels;
        _text << "<text x=\"" << x << "\" y=\"" << y + side + 14 << "\">" << title << "</text>\n<svg x=\"" << x
              << "\" y=\"" << y << "\" width=\"" << side << "\" height=\"" << side << "\">\n";
    }

    void close() { _text << "</svg>\n"; }

    /// Dots, or lines from each even point to the one after it; in pixels of the panel, y downward.
    void draw(std::vector<std::pair<double, double>> const& points, bool areLines)
    {
        _text << "<path stroke-linecap=\"round\" fill=\"none\" "
              << (areLines ? "stroke=\"#999\" stroke-width=\"1\"" : "stroke=\"#14508c\" stroke-width=\"2.4\"")
              << " d=\"";
        for (std::size_t i = 0; i < points.size(); ++i) {
            char place[40];
            std::snprintf(place, sizeof place, "%.1f %.1f", points[i].first, points[i].second);
            _text << (areLines && i % 2 != 0 ? "L" : "M") << place;
            if (!areLines)
                _text << "h0";
        }
        _text << "\"/>\n";
    }

    void drawSquare()
    {
        _text << "<rect width=\"" << side << "\" height=\"" << side << "\" fill=\"none\" stroke=\"#999\"/>\n";
    }

    void save(std::string const& path)
    {
        std::ofstream file(path, std::ios::binary);
        file << _text.str() << "</svg>\n";
        file.close();
        if (file.fail())
            throw std::runtime_error("can't write " + path);
    }

private:
    std::ostringstream _text;
    int _panels = 0;
};

void addPoints(Drawing& drawing, std::string const& title, std::function<void(float&, float&)> const& draw)
{
    std::vector<std::pair<double, double>> points;
    for (int i = 0; i < pointCount; ++i) {
        float x, y;
        draw(x, y);
        points.emplace_back(x * side, (1 - y) * side);
    }
    drawing.open(title);
    drawing.drawSquare();
    drawing.draw(points, false);
    drawing.close();
}

void drawPoints(std::string const& path)
{
    Vn::RnLecuyerUniformRng<float> lecuyer;
    Vn::RnSeparableBiRng<float> random(&lecuyer);
    Vn::RnHaltonBiRng<float> halton, largeBases(17, 19);
    Vn::RnHammersleyBiRng<float> hammersley(pointCount);
    Vn::RnNiederreiterMultiRng<float> niederreiter;
    Vn::RnVanDerCorputRng<float> sequence;
    Vn::RnSeparableBiRng<float> wrong(&sequence);
    auto const from = [](Vn::RnBiRng<float>& source) {
        return [&source](float& x, float& y) { source.getSample(x, y); };
    };
    Drawing drawing(6);
    addPoints(drawing, "L'Ecuyer", from(random));
    addPoints(drawing, "Halton, bases 2 and 3", from(halton));
    addPoints(drawing, "Hammersley", from(hammersley));
    addPoints(drawing, "Niederreiter, first two", [&niederreiter](float& x, float& y) {
        float point[4];
        niederreiter.getSample(point);
        x = point[0];
        y = point[1];
    });
    addPoints(drawing, "Halton, bases 17 and 19", from(largeBases));
    addPoints(drawing, "pairs of one sequence", from(wrong));
    drawing.save(path);
}

struct Vertex
{
    double x, y, z;
};

/// The vertices behind the `number`th "vertex [" of a scene.
std::vector<Vertex> verticesOf(std::string const& scene, int number)
{
    std::size_t at = 0;
    for (int i = 0; i < number; ++i)
        at = scene.find("vertex [", at) + 8;
    std::istringstream stream(scene.substr(at, scene.find(']', at) - at));
    std::vector<Vertex> vertices;
    Vertex vertex;
    char comma;
    while (stream >> vertex.x >> vertex.y >> vertex.z >> comma)
        vertices.push_back(vertex);
    return vertices;
}

/// How a scene is seen: pixels to a unit along the ground and upward, and what stands in the middle of the panel.
struct View
{
    double scale, upScale;
    Vertex middle;
    bool isFlat;  ///< y is up; otherwise z, and the eye is a little above the ground
};

void addScene(Drawing& drawing, std::string const& title, std::string const& scene, View const& view)
{
    auto const project = [&view](std::vector<Vertex> const& vertices) {
        std::vector<std::pair<double, double>> points;
        for (Vertex const& v : vertices) {
            const double x = v.x - view.middle.x, y = v.y - view.middle.y, z = v.z - view.middle.z;
            const double right = view.isFlat ? view.scale * x : view.scale * (0.9 * x + 0.44 * y);
            const double up =
                view.isFlat ? view.upScale * y : view.scale * (0.4 * y - 0.2 * x) + view.upScale * 0.9 * z;
            points.emplace_back(side / 2 + right, side / 2 - up);
        }
        return points;
    };
    drawing.open(title);
    std::vector<Vertex> frame = verticesOf(scene, 2);
    if (scene.find("orderedRGBA") != std::string::npos)
        frame.resize(8);  // its two last vertices are in no line
    drawing.draw(project(frame), true);
    drawing.draw(project(verticesOf(scene, 1)), false);
    drawing.close();
}

template <class Histogram>
std::string sceneOf(Histogram const& histogram)
{
    std::ostringstream stream;
    histogram.dumpInventor(stream);
    return stream.str();
}

template <class Histogram>
std::string sceneOfDirections(Vn::RnSphericalRng<float>& directions)
{
    Histogram histogram(12, 24);
    for (int i = 0; i < 20000; ++i) {
        float cosine, phi;
        directions.getSampleCosine(cosine, phi);
        histogram.addSampleCosine(cosine, phi);
    }
    return sceneOf(histogram);
}

void drawScenes(std::string const& path)
{
    Vn::RnLecuyerUniformRng<float> uniform;
    Vn::RnGaussianRng<float> gaussian(&uniform);
    Vn::RnHistogram<float> line(40, -4.0f, 4.0f);
    line.addSamples(gaussian, 20000);

    Vn::RnHistogramRng<float> again(line, &uniform);
    Vn::RnHistogram<float> copy(20, -4.0f, 4.0f);
    copy.addSamples(again, 20000);

    Vn::RnMexicanHatRng<float> triangle(&uniform, 0.5f, 1.0f);
    Vn::RnSeparableBiRng<float> pairs(&triangle);
    Vn::RnHistogramBi<float> area(16, 16, 0.0f, 1.0f, 0.0f, 1.0f);
    area.addSamples(pairs, 50000);

    Vn::RnHaltonBiRng<float> points;
    Vn::RnUniformSphericalRng<float> sphere(&points);
    Vn::RnUniformHemisphericalRng<float> hemisphere(&points);
    Vn::RnCosineHemisphericalRng<float> cosine(&points);

    Drawing drawing(6);
    addScene(drawing, "Gaussian", sceneOf(line), {17, 270, {0, 0.22, 0}, true});
    addScene(drawing, "drawn again from that", sceneOf(copy), {17, 270, {0, 0.22, 0}, true});
    addScene(drawing, "two triangles", sceneOf(area), {100, 22, {0.5, 0.5, 1.9}, false});
    addScene(drawing, "uniform on the sphere", sceneOfDirections<Vn::RnHistogramSpherical<float>>(sphere),
             {780, 780, {0, 0, 0}, false});
    addScene(drawing, "uniform on the hemisphere",
             sceneOfDirections<Vn::RnHistogramHemispherical<float>>(hemisphere), {390, 390, {0, 0, 0.07}, false});
    addScene(drawing, "cosine on the hemisphere", sceneOfDirections<Vn::RnHistogramHemispherical<float>>(cosine),
             {390, 390, {0, 0, 0.15}, false});
    drawing.save(path);
}
}  // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "pointsets FOLDER: draws pointsets.svg and scenes.svg\n";
        return 2;
    }
    try {
        drawPoints(std::string(argv[1]) + "/pointsets.svg");
        drawScenes(std::string(argv[1]) + "/scenes.svg");
    } catch (std::exception const& failure) {
        std::cerr << "pointsets: " << failure.what() << "\n";
        return 1;
    }
    return 0;
}
