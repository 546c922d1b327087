// The outputs of the thread layer on POSIX: reasons that are told, pipes that nobody reads, files that are replaced.
#include "threadlogbody.h"

#include <threadlog/threadlogoutputs_p.h>

#include <cstdlib>
#include <filesystem>
#include <locale>
#include <string>

using namespace VnTest;
using Vn::LgTypes;
using Vn::ThreadLog;
using Vn::ThreadLogOutputs;

namespace
{
std::string getPath(char const* name)
{
    return std::getenv("T4Q_TEST_DIR") + std::string("/") + name;
}
}  // namespace

// Levels.

VN_CHILD(appendsAtNumbersThatAreNoLevels)
{
    const Started start;
    // Side by side: a look behind the levels of the first finds those of the second.
    ThreadLogOutputs outputs[2];
    for (ThreadLogOutputs& each : outputs)
        each.open();
    char bytes[64] = "";
    const bool isQuiet = outputs[0].append(LgTypes::Level(7), "no level\n") &&
                         outputs[1].append(LgTypes::Level(-7), "no level\n") &&
                         outputs[0].readTail(LgTypes::Level(7), bytes, sizeof bytes) == 0;
    const bool isWritten = outputs[0].append(LgTypes::Warning, "a level\n");
    for (ThreadLogOutputs& each : outputs)
        each.close();
    return isQuiet && isWritten ? 0 : 1;
}

TEST(ThreadLogOutputs, aNumberThatIsNoLevelHasNoFile)
{
    const TempFolder folder;
    expectSuccess(logger("appendsAtNumbersThatAreNoLevels", folder).run());
    const std::string log = contentOf(folder.path("events.log"));
    EXPECT_EQ(log.find("no level"), log.npos) << log;
    EXPECT_NE(log.find("a level"), log.npos) << log;
}

// The banner.

namespace
{
class CommaPoint : public std::numpunct<char>
{
    char do_decimal_point() const override { return ','; }
};
}  // namespace

VN_CHILD(reopensInALocale)
{
    std::locale::global(std::locale(std::locale::classic(), new CommaPoint));
    const Started start;
    ThreadLog log;
    std::filesystem::rename(getPath("events.log"), getPath("events.log.1"));
    return log.reopen() ? 0 : 1;
}

TEST(ThreadLogOutputs, theBannerOfANewFileIsThatOfTheFirstInAnyLocale)
{
    const TempFolder folder;
    expectSuccess(logger("reopensInALocale", folder).run());
    const auto first = linesOf(folder.path("events.log.1"));
    const auto second = linesOf(folder.path("events.log"));
    ASSERT_GE(first.size(), 4u);
    ASSERT_GE(second.size(), 4u);
    EXPECT_TRUE(first[3].starts_with("===== Clock Frequency: 0.")) << first[3];
    EXPECT_EQ(second[3], first[3]);
}
