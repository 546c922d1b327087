// Coin reads and renders, without a screen, the scenes that histograms write.
#include "child.h"
#include "tempfolder.h"

#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>

using VnTest::Child;
using VnTest::ChildRun;
using VnTest::contentOf;
using VnTest::TempFolder;

namespace
{
ChildRun writeScenes(TempFolder const& folder)
{
    return Child::program("pointsets")
        .without("VN_DEBUG_INITIALIZE")
        .arguments({"--inventor", folder.path()})
        .run();
}

ChildRun render(TempFolder const& folder)
{
    // As on a machine without a screen.
    return Child::program("renderscenes")
        .without("DISPLAY")
        .without("WAYLAND_DISPLAY")
        .arguments({folder.path(), folder.path("scenes.png")})
        .run();
}
}  // namespace

TEST(RenderedScenes, eachIsAPictureThatIsNotEmpty)
{
    const TempFolder folder;
    ASSERT_EQ(writeScenes(folder).exitCode, 0);
    const ChildRun run = render(folder);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.exitCode, 0);
    // A point takes four pixels, of which another one may hide some.
    const std::map<std::string, int> points{{"gaussian", 40}, {"again", 20},       {"triangles", 256},
                                            {"sphere", 288},  {"hemisphere", 288}, {"cosine", 288}};
    std::istringstream lines(run.out);
    std::string name;
    std::size_t scenes = 0;
    for (int pixels = 0; lines >> name >> pixels; ++scenes) {
        ASSERT_TRUE(points.contains(name)) << name;
        EXPECT_GT(pixels, 2 * points.at(name)) << name;
        EXPECT_LT(pixels, 266 * 240 / 10) << name;
    }
    EXPECT_EQ(scenes, points.size());
    EXPECT_EQ(contentOf(folder.path("scenes.png")).substr(1, 3), "PNG");
}

TEST(RenderedScenes, aSceneWithoutPointsHasNoPicture)
{
    const TempFolder folder;
    ASSERT_EQ(writeScenes(folder).exitCode, 0);
    folder.file("again.iv", "#Inventor V2.1 ascii\nSeparator { LightModel { model BASE_COLOR } }\n");
    const ChildRun run = render(folder);
    EXPECT_EQ(run.err, "renderscenes: a scene without points\n");
    EXPECT_EQ(run.exitCode, 1);
}

TEST(RenderedScenes, aFileThatIsNoSceneIsNamed)
{
    const TempFolder folder;
    ASSERT_EQ(writeScenes(folder).exitCode, 0);
    folder.file("sphere.iv", "#Inventor V2.1 ascii\nSeparator { PointSet { vertexProperty } }\n");
    const ChildRun run = render(folder);
    EXPECT_EQ(run.err.find("renderscenes: " + folder.path("sphere.iv") + " is no scene: "), 0u) << run.err;
    EXPECT_EQ(run.exitCode, 1);
}

TEST(RenderedScenes, aMissingFileIsNamed)
{
    const TempFolder folder;
    const ChildRun run = render(folder);
    EXPECT_NE(run.err.find("can't open " + folder.path("gaussian.iv")), std::string::npos) << run.err;
    EXPECT_EQ(run.exitCode, 1);
}
