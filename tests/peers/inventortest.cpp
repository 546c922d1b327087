// Coin, an Open Inventor of its own, reads every scene that a histogram dumps.

#include <base/rncosinehemisphericalrng.h>
#include <base/rngaussianrng.h>
#include <base/rnhaltonbirng.h>
#include <base/rnhistogram.h>
#include <base/rnhistogrambi.h>
#include <base/rnhistogramspherical.h>
#include <base/rnlecuyeruniformrng.h>

#include <Inventor/SoDB.h>
#include <Inventor/SoInput.h>
#include <Inventor/errors/SoReadError.h>
#include <Inventor/nodes/SoDrawStyle.h>
#include <Inventor/nodes/SoLightModel.h>
#include <Inventor/nodes/SoLineSet.h>
#include <Inventor/nodes/SoPointSet.h>
#include <Inventor/nodes/SoSeparator.h>
#include <Inventor/nodes/SoVertexProperty.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <sstream>
#include <string>
#include <vector>

/// Coin keeps one field of its clock to the end of the process.
extern "C" __attribute__((visibility("default"))) char const* __lsan_default_suppressions();
extern "C" char const* __lsan_default_suppressions()
{
    return "leak:libCoin.so";
}

namespace
{
using Vertex = std::array<float, 3>;

std::string complaints;

void complain(SoError const* error, void*)
{
    complaints += error->getDebugString().getString();
    complaints += '\n';
}

std::vector<Vertex> verticesOf(SoVertexShape const& shape)
{
    auto const* const property = static_cast<SoVertexProperty*>(shape.vertexProperty.getValue());
    std::vector<Vertex> vertices;
    for (int i = 0; property != nullptr && i < property->vertex.getNum(); ++i)
        vertices.push_back({property->vertex[i][0], property->vertex[i][1], property->vertex[i][2]});
    return vertices;
}

/// What the reader makes of a scene.
struct Scene
{
    bool isRead = false;
    std::vector<Vertex> points, frame;
    std::vector<int> lines;
    std::uint32_t color = 0;
};

Scene read(std::string const& text)
{
    Scene scene;
    complaints.clear();
    SoDB::init();
    SoReadError::setHandlerCallback(&complain, nullptr);
    SoInput input;
    input.setBuffer(text.data(), text.size());
    SoSeparator* const root = SoDB::readAll(&input);
    EXPECT_EQ(complaints, "");
    if (root == nullptr)
        return scene;
    root->ref();
    auto* const top = static_cast<SoSeparator*>(root);
    auto const child = [top](int i) { return i < top->getNumChildren() ? top->getChild(i) : nullptr; };
    auto const* const light = dynamic_cast<SoLightModel*>(child(0));
    auto const* const style = dynamic_cast<SoDrawStyle*>(child(1));
    auto const* const points = dynamic_cast<SoPointSet*>(child(2));
    auto const* const lines = dynamic_cast<SoLineSet*>(child(3));
    if (light != nullptr && style != nullptr && points != nullptr && lines != nullptr && child(4) == nullptr) {
        scene.isRead = light->model.getValue() == SoLightModel::BASE_COLOR && style->pointSize.getValue() == 2.0f &&
                       lines->startIndex.getValue() == 0;
        scene.points = verticesOf(*points);
        scene.frame = verticesOf(*lines);
        for (int i = 0; i < lines->numVertices.getNum(); ++i)
            scene.lines.push_back(lines->numVertices[i]);
        auto const* const property = static_cast<SoVertexProperty*>(lines->vertexProperty.getValue());
        if (property->orderedRGBA.getNum() != 0)
            scene.color = property->orderedRGBA[0];
    }
    root->unref();
    return scene;
}

template <class Histogram>
Scene sceneOf(Histogram const& histogram)
{
    std::ostringstream stream;
    histogram.dumpInventor(stream);
    return read(stream.str());
}

template <class T>
class InventorTest : public testing::Test
{};

using Types = testing::Types<float, double>;
}  // namespace

TYPED_TEST_SUITE(InventorTest, Types);

TYPED_TEST(InventorTest, readsALine)
{
    using T = TypeParam;
    Vn::RnLecuyerUniformRng<T> uniform;
    Vn::RnGaussianRng<T> gaussian(&uniform);
    Vn::RnHistogram<T> histogram(16, T(-2), T(2));
    histogram.addSamples(gaussian, 10000);
    const Scene scene = sceneOf(histogram);
    ASSERT_TRUE(scene.isRead);
    ASSERT_EQ(scene.points.size(), 16u);
    for (unsigned int i = 0; i < 16; ++i) {
        EXPECT_NEAR(scene.points[i][0], -1.875 + 0.25 * i, 1e-5);
        EXPECT_NEAR(scene.points[i][1],
                    static_cast<double>(histogram.getBinValue(i) / (T(0.25) * histogram.getTotal())), 1e-5);
        EXPECT_EQ(scene.points[i][2], 0.0f);
    }
    EXPECT_EQ(scene.frame,
              (std::vector<Vertex>{{-2, 0, 0}, {2, 0, 0}, {0, 0, 0}, {0, 1, 0}, {0, 0, 0}, {0, 1, 0}}));
    EXPECT_EQ(scene.lines, (std::vector<int>{2, 2, 2}));
}

TYPED_TEST(InventorTest, readsAnArea)
{
    using T = TypeParam;
    Vn::RnHaltonBiRng<T> source;
    Vn::RnHistogramBi<T> histogram(4, 2, T(0), T(1), T(0), T(2));
    histogram.addSamples(source, 5000);
    const Scene scene = sceneOf(histogram);
    ASSERT_TRUE(scene.isRead);
    ASSERT_EQ(scene.points.size(), 8u);
    for (unsigned int i = 0; i < 8; ++i) {
        EXPECT_NEAR(scene.points[i][0], 0.125 + 0.25 * (i % 4), 1e-5);
        EXPECT_NEAR(scene.points[i][1], 0.5 + i / 4, 1e-5);
        EXPECT_NEAR(scene.points[i][2],
                    static_cast<double>(histogram.getBinValue(i % 4, i / 4) / (T(0.25) * histogram.getTotal())),
                    1e-5);
    }
    ASSERT_EQ(scene.frame.size(), 10u);
    EXPECT_EQ(scene.frame[4], (Vertex{1, 2, 0}));
    EXPECT_EQ(scene.frame[9], (Vertex{0.5f, 0.5f, 1}));
    EXPECT_EQ(scene.lines, (std::vector<int>{2, 2, 2, 2, 2}));
}

TYPED_TEST(InventorTest, readsDirections)
{
    using T = TypeParam;
    Vn::RnHaltonBiRng<T> source;
    Vn::RnCosineHemisphericalRng<T> directions(&source);
    Vn::RnHistogramHemispherical<T> half(8, 8);
    Vn::RnHistogramSpherical<T> whole(8, 8);
    for (int i = 0; i < 20000; ++i) {
        T cosine, phi;
        directions.getSampleCosine(cosine, phi);
        half.addSampleCosine(cosine, phi);
        whole.addSampleCosine(T(2) * cosine - T(1), phi);
    }
    const double solid = 2 * 3.14159265358979 / 64;
    for (bool isWhole : {false, true}) {
        const Scene scene = isWhole ? sceneOf(whole) : sceneOf(half);
        ASSERT_TRUE(scene.isRead);
        ASSERT_EQ(scene.points.size(), 64u);
        for (unsigned int i = 0; i < 64; ++i) {
            // As far out as its density, which half the number of directions makes on twice the solid angle.
            const double length =
                std::hypot(std::hypot(scene.points[i][0], scene.points[i][1]), scene.points[i][2]);
            const double density = static_cast<double>(half.getBinValue(i / 8, i % 8) / half.getTotal()) / solid;
            EXPECT_NEAR(length, isWhole ? density / 2 : density, 1e-5);
        }
        ASSERT_EQ(scene.frame.size(), 10u);
        EXPECT_EQ(scene.frame[2], (Vertex{1, -1, 0}));
        EXPECT_EQ(scene.frame[9], (Vertex{0, 0, 1}));
        EXPECT_EQ(scene.lines, (std::vector<int>{2, 2, 2, 2}));  // the last two vertices aren't drawn
        EXPECT_EQ(scene.color, 0xFFFFFFFFu);
    }
}

TYPED_TEST(InventorTest, readsScenesWithoutPoints)
{
    using T = TypeParam;
    EXPECT_TRUE(sceneOf(Vn::RnHistogram<T>(0, T(0), T(1))).isRead);
    EXPECT_TRUE(sceneOf(Vn::RnHistogramBi<T>(0, 0, T(0), T(1), T(0), T(1))).isRead);
    EXPECT_TRUE(sceneOf(Vn::RnHistogramHemispherical<T>(0, 0)).isRead);
    EXPECT_TRUE(sceneOf(Vn::RnHistogramSpherical<T>(0, 0)).isRead);
}

TEST(Inventor, refusesASceneThatIsCut)
{
    std::ostringstream stream;
    Vn::RnHistogram<float>(4, 0.0f, 1.0f).dumpInventor(stream);
    SoDB::init();
    complaints.clear();
    SoReadError::setHandlerCallback(&complain, nullptr);
    const std::string cut = stream.str().substr(0, stream.str().size() / 2);
    SoInput input;
    input.setBuffer(cut.data(), cut.size());
    SoSeparator* const root = SoDB::readAll(&input);
    if (root != nullptr) {
        root->ref();
        root->unref();
    }
    EXPECT_NE(complaints, "");  // so the tests above could have failed
}
