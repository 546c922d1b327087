// Build information without memory.
#include "memory.h"

#include "buildinfo.h"
#include "expectchild.h"
#include "testpackage.h"

#include <base/dbgbuildinfomgr.h>
#include <base/dbgbuildinfoutil.h>

#include <gtest/gtest.h>

#include <iostream>
#include <sstream>
#include <string>
#include <vector>

using namespace Vn;
using VnTest::BuildFacts;
using VnTest::failsWithoutMemory;

namespace
{
std::string printed()
{
    std::ostringstream stream;
    DbgBuildInfoMgr::printBuildInfo(stream, true);
    return stream.str();
}
}  // namespace

VN_CHILD(registrationWithoutMemory)
{
    VnTest::start();
    // Each API is new, then known; at the ninth the table grows.
    static const char names[][3] = {"A0", "A1", "A2", "A3", "A4", "A5", "A6", "A7", "A8", "A9"};
    static std::vector<BuildFacts> facts;
    for (char const* name : names)
        facts.push_back({.api = name});
    int failures = 0;
    int unexpected = 0;
    for (BuildFacts const& one : facts)
        for (int turn = 0; turn < 2; ++turn) {
            const std::string before = printed();
            int n = 0;
            for (; failsWithoutMemory(n, [&] { DbgBuildInfoUtil::registerInfo(VnTest::ownedInfo(one)); }); ++n)
                unexpected += printed() != before;
            failures += n;
            unexpected += printed() == before;
        }
    VnTest::stop();
    std::cout << (failures > 40) << " " << unexpected << "\n";
    return 0;
}

TEST(OutOfMemory, refusedBuildInformationLeavesTheRegistryAsItWas)
{
    VnTest::expectOutput("registrationWithoutMemory", "1 0\n");
}

VN_CHILD(modulesWithoutMemory)
{
    VnTest::start();
    const std::string before = printed();
    int n = 0;
    int unexpected = 0;
    for (; failsWithoutMemory(n, [] { DbgBuildInfoUtil::registerModule("base"); }); ++n)
        unexpected += printed() != before;
    unexpected += printed() == before;
    VnTest::stop();
    std::cout << (n > 4) << " " << unexpected << "\n";
    return 0;
}

TEST(OutOfMemory, aModuleThatCannotBeRegisteredLeavesTheRegistryAsItWas)
{
    VnTest::expectOutput("modulesWithoutMemory", "1 0\n");
}
