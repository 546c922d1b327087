#include "child.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

using VnTest::Child;
using VnTest::ChildRun;

TEST(StreamTimePage, showsWhatTheProgramPrints)
{
    std::ifstream stream(VN_STREAM_TIME_PAGE, std::ios::binary);
    ASSERT_TRUE(stream) << VN_STREAM_TIME_PAGE;
    const std::string page(std::istreambuf_iterator<char>(stream), {});
    ChildRun run = Child::program("streamtime").without("VN_DEBUG_INITIALIZE").run();
    std::erase(run.out, '\r');
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_GT(run.out.size(), 500u);
    EXPECT_NE(page.find("```console\n$ streamtime\n" + run.out + "```\n"), std::string::npos) << run.out;
}
