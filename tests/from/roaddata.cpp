// What docs/samplingroad.svg shows, as lines of a word and numbers: drawn by tools/drawguide.py.
#include <base/rncosinehemisphericalrng.h>
#include <base/rngaussianrng.h>
#include <base/rnhaltonbirng.h>
#include <base/rnhistogramrng.h>
#include <base/rnhistogramspherical.h>
#include <base/rnlecuyeruniformrng.h>

#include <cstdio>
#include <sstream>
#include <string>

namespace
{
void numbers()
{
    Vn::RnLecuyerUniformRng<float> uniform;
    for (int i = 0; i < 60; ++i)
        std::printf("uniform %.4f\n", static_cast<double>(uniform()));
    Vn::RnGaussianRng<float> gaussian(&uniform);
    for (int i = 0; i < 60; ++i)
        std::printf("gaussian %.4f\n", static_cast<double>(gaussian()));
    Vn::RnUniformHistogram<float> histogram(24, -3.0f, 3.0f);
    histogram.addSamples(gaussian, 20000);
    for (const float bin : histogram.getBins())
        std::printf("bin %.0f\n", static_cast<double>(bin));
    Vn::RnHistogramRng<float> again(histogram, &uniform);
    for (int i = 0; i < 60; ++i)
        std::printf("again %.4f\n", static_cast<double>(again()));
}

void directions()
{
    Vn::RnHaltonBiRng<float> points;
    for (int i = 0; i < 128; ++i) {
        float x, y;
        points.getSample(x, y);
        std::printf("point %.4f %.4f\n", static_cast<double>(x), static_cast<double>(y));
    }
    points.restart();
    Vn::RnCosineHemisphericalRng<float> cosine(&points);
    for (int i = 0; i < 128; ++i) {
        float x, y, z;
        cosine.getSampleXYZ(x, y, z);
        std::printf("direction %.4f %.4f %.4f\n", static_cast<double>(x), static_cast<double>(y),
                    static_cast<double>(z));
    }
    Vn::RnHistogramHemispherical<float> histogram(12, 24);
    for (int i = 0; i < 20000; ++i) {
        float height, phi;
        cosine.getSampleCosine(height, phi);
        histogram.addSampleCosine(height, phi);
    }
    std::ostringstream scene;
    histogram.dumpInventor(scene);
    const std::string text = scene.str();
    const std::size_t begin = text.find("vertex [") + 8;
    std::istringstream vertices(text.substr(begin, text.find(']', begin) - begin));
    double x, y, z;
    char comma;
    while (vertices >> x >> y >> z >> comma)
        std::printf("vertex %.4f %.4f %.4f\n", x, y, z);
}
}  // namespace

int main()
{
    numbers();
    directions();
}
