// The command line of a whole test program: `groups`, with a group for each subsystem, and the `mytests` of the README.
#include "child.h"
#include "tempfolder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

using VnTest::Child;
using VnTest::ChildRun;

namespace
{
ChildRun run(char const* program, std::vector<std::string> arguments)
{
    Child child = Child::program(program);
    for (char const* name : {"VN_TRACE_OPTIONS", "VN_RUN_TEST_MSGS", "VN_TEST_DIR", "VN_DEBUG_INITIALIZE"})
        child.without(name);
    return child.arguments(std::move(arguments)).run();
}

/// Names of the groups, from the program's own list of performance runs.
std::vector<std::string> groupNames()
{
    std::vector<std::string> names;
    std::ifstream list(VN_GROUPS_LIST);
    for (std::string line; std::getline(list, line);)
        names.push_back(line.substr(0, line.find(' ')));
    return names;
}
}  // namespace

TEST(Groups, eachDoesItsWork)
{
    ASSERT_GE(groupNames().size(), 10U);
    for (std::string const& name : groupNames()) {
        SCOPED_TRACE(name);
        const ChildRun result = run("groups", {name, "20"});
        EXPECT_EQ(result.exitCode, 0) << result.out;
        EXPECT_EQ(result.err, "");
        EXPECT_NE(result.out.find("| Executing " + name + "\n"), std::string::npos) << result.out;
        EXPECT_NE(result.out.find("| Test group executed successfully.\n"), std::string::npos) << result.out;
        const ChildRun wrong = run("groups", {name, "many"});
        EXPECT_EQ(wrong.exitCode, 2) << "an argument that is no number";
        EXPECT_EQ(wrong.out.find("successfully"), std::string::npos);
    }
}

TEST(Groups, allAreListedAndAllAreTimed)
{
    const ChildRun list = run("groups", {});
    EXPECT_EQ(list.exitCode, 0);
    std::size_t listed = 0;
    for (std::size_t at = list.out.find(" [COUNT]\n"); at != std::string::npos;
         at = list.out.find(" [COUNT]\n", at + 1))
        ++listed;
    EXPECT_EQ(listed, groupNames().size()) << list.out;
    for (std::string const& name : groupNames())
        EXPECT_NE(list.out.find("\n" + name + " [COUNT]\n"), std::string::npos) << name;
}

TEST(Groups, theListThatShipsRuns)
{
    const ChildRun result = run("groups", {"-perf", VN_GROUPS_LIST});
    EXPECT_EQ(result.exitCode, 0) << result.out;
    EXPECT_EQ(result.err, "");
    const std::size_t table = result.out.find("Group Name              nbCycles");
    ASSERT_NE(table, std::string::npos);
    for (std::string const& name : groupNames())
        EXPECT_NE(result.out.find("\n" + name + " ", table), std::string::npos) << name;
}

TEST(Groups, everyOtherFormOfTheCommandLine)
{
    EXPECT_EQ(run("groups", {"-perf"}).exitCode, 1);
    EXPECT_EQ(run("groups", {"-perf", "no such list"}).exitCode, 2);
    EXPECT_EQ(run("groups", {"no such group"}).exitCode, 1);
    EXPECT_EQ(run("groups", {"-dumpLibs"}).exitCode, 0);
    EXPECT_EQ(run("groups", {"-dumpLibs", "endian", "5"}).exitCode, 0);
    EXPECT_EQ(run("groups", {"-dumpLeaks", "errors", "5"}).exitCode, 0);
    EXPECT_EQ(run("groups", {"-detectLeaks", "errors", "5"}).exitCode, 0);
    EXPECT_EQ(run("groups", {"-detectLeaks"}).exitCode, 1);
}

TEST(Groups, filesGoWhereTheVariableSays)
{
    const VnTest::TempFolder temp;
    Child child = Child::program("groups");
    const ChildRun result = child.arguments({"files", "3"}).with("VN_TEST_DIR", temp.path()).run();
    EXPECT_EQ(result.exitCode, 0) << result.out;
    EXPECT_TRUE(std::filesystem::is_empty(temp.path())) << "and are gone";
    const ChildRun failing =
        Child::program("groups").arguments({"files", "many"}).with("VN_TEST_DIR", temp.path()).run();
    EXPECT_EQ(failing.exitCode, 2);
    EXPECT_TRUE(std::filesystem::is_empty(temp.path())) << "also after a run that failed";
    const ChildRun nowhere =
        Child::program("groups").arguments({"files"}).with("VN_TEST_DIR", temp.path("a")).run();
    EXPECT_EQ(nowhere.exitCode, 2);
}

TEST(MyTests, listsItselfRunsAndTimes)
{
    const ChildRun list = run("mytests", {});
    EXPECT_EQ(list.exitCode, 0);
    EXPECT_NE(list.out.find("\nsorting COUNT\n"), std::string::npos) << list.out;
    EXPECT_EQ(run("mytests", {"sorting", "100"}).exitCode, 0);
    EXPECT_EQ(run("mytests", {"sorting"}).exitCode, 0);
    const VnTest::TempFolder temp;
    const ChildRun timed = run("mytests", {"-perf", temp.file("list", "sorting 2 100\nsorting 2 1000\n")});
    EXPECT_EQ(timed.exitCode, 0);
    EXPECT_NE(timed.out.find("\nsorting                        2       0."), std::string::npos) << timed.out;
}
