// The outputs of the thread layer on POSIX: reasons that are told, pipes that nobody reads, files that are replaced.
#include "threadlogbody.h"

#include <threadlog/threadlogoutputs_p.h>

#include <cstdlib>
#include <string>

using namespace VnTest;
using Vn::LgTypes;
using Vn::ThreadLogOutputs;

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
