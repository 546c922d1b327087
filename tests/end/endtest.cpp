// What static objects, threads and libraries may still call when a process ends, or when they come after the stop.
#include "expectchild.h"
#include "library.h"
#include "lockname.h"
#include "logfile.h"
#include "tempfolder.h"

#include <base/trace.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <iostream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

using VnTest::Child;
using VnTest::ChildRun;
using VnTest::Library;
using VnTest::TempFolder;

namespace
{
// On Windows a program's static objects are destroyed before those of the libraries that it has loaded.
#if defined(_WIN32)
constexpr char gone[] = "";
#else
constexpr char gone[] = "static objects gone: 1\n";
#endif

class End : public testing::Test
{
protected:
    /// Runs the scenario of a program and expects what it writes, and that it ends well.
    void expectEnd(char const* program, char const* scenario, std::string const& out)
    {
        Child child = Child::program(program);
        child.arguments({scenario}).with("T4Q_TEST_DIR", folder.path());
        for (char const* name : {"VN_DEBUG_INITIALIZE", "VN_TRACE_OPTIONS", "VN_LOG_WARNING", "VN_LOG_FATAL_ERROR"})
            child.without(name);
        child.with("VN_TEST_LATE", "17");
        if (lock)
            child.with("VN_INTERNAL_INTERPROCESS_LOG_LOCK", lock->get());
        // Of the library that is unloaded whole, what it never destroys stays.
        if (std::string(program) == "unloadhost")
            child.with("ASAN_OPTIONS", "detect_leaks=0");
        const ChildRun run = child.run();
        EXPECT_EQ(run.out, out);
        EXPECT_EQ(run.err, "");
        EXPECT_EQ(run.exitCode, 0);
        EXPECT_FALSE(run.crashed);
    }

    void expectLate(char const* scenario, std::string const& out) { expectEnd("latehost", scenario, gone + out); }

    std::vector<std::string> events() const { return VnTest::linesOf(folder.path("events.log")); }

    TempFolder folder;
    std::optional<VnTest::LockName> lock;
};
}  // namespace

TEST_F(End, variablesInStaticOwnersOutliveNothing)
{
    expectEnd("endings", "owners", "4\n");
}

TEST_F(End, aMessageFromAStaticObjectBehindTheStopIsDropped)
{
    expectEnd("endings", "goodbye", "gone\n");
    for (std::string const& line : events())
        EXPECT_EQ(line.find("goodbye"), std::string::npos) << line;
}

TEST_F(End, aPackageLeavesTheManagerAfterEverything)
{
    expectLate("package", "listed 1\nlisted 0\nlisted 1\n");
}

TEST_F(End, aVariableLeavesItsRegistryAfterEverything)
{
    expectLate("variable", "\nname              VN_TEST_LATE value \"17\" default \"default\"\n0\n1 17\n");
}

TEST_F(End, theStopIsWholeAfterEverything)
{
    lock.emplace(folder);
    expectLate("stop", "stop late\nNo packages waiting to be initialize.\nNo packages saved.\n");
    ASSERT_FALSE(events().empty());
    EXPECT_EQ(events().back(), "===== Message Logger Stopped =====");
#if !defined(_WIN32)
    EXPECT_FALSE(std::filesystem::exists(lock->getFile())) << "the last unlock() removes it";
#endif
}

TEST_F(End, aReaderFinishesItsWorkAfterEverything)
{
    lock.emplace(folder);
    expectLate("reader", "pending 0, lock 1\n");
    ASSERT_GE(events().size(), 3u);
    for (int i = 1; i <= 3; ++i) {
        const auto line = VnTest::LogLine::parse(events().end()[i - 4]);
        ASSERT_TRUE(line.has_value());
        EXPECT_EQ(line->text, "Reader message " + std::to_string(i));
    }
}

TEST_F(End, anEndedGroupDropsMessagesAfterEverything)
{
    expectLate("group", "Group evaluated 1\n");
}

TEST_F(End, whatCanBeListedIsThereAfterEverything)
{
    expectLate("lists",
               "late -x file late 17\nlibraries 1\napplication late\nbuild 1\n| traced\nlevel 1\ngroup 1\n");
}

// On Windows no other thread runs any more when static objects of libraries are destroyed.
#if !defined(_WIN32)
TEST_F(End, aReaderMayBeWritingWhenMainReturns)
{
    lock.emplace(folder);
    for (char const* scenario : {"reader", "stoppedReader"}) {
        SCOPED_TRACE(scenario);
        for (int i = 0; i < 3; ++i)  // the thread sanitizer waits a second at the end of each
            expectEnd("endings", scenario, "");
    }
}
#endif

TEST_F(End, aThreadThatTookALockOutlivesTheLibrary)
{
    lock.emplace(folder);
    expectEnd("unloadhost", "released", "loaded 00\nthread ended\ntaken again\n");
    expectEnd("unloadhost", "held", "loaded 00\nthread ended\n");
}

VN_CHILD(unloadedLevels)
{
    std::ostringstream text;
    {
        const Library guest("VNtestguest");
        Vn::Trace::printLevels(text);
    }
    std::cout << text.str();
    text.str("");
    Vn::Trace::printLevels(text);
    std::cout << text.str();
    {
        const Library guest("VNtestguest");
    }
    Vn::Trace::printLevels(std::cout);
    return 0;
}

TEST_F(End, levelsOfAnUnloadedLibraryAreListed)
{
    const auto list = [](std::string const& guest) {
        const auto row = [](std::string name, char const* mark, std::string const& file) {
            name.resize(30, ' ');
            return mark + name + " " + file + "\n";
        };
        return "\nRegistered trace levels:\n\n" + row("Exceptions", "X ", "") + guest + row("Main", "X ", "trace") +
               row("TestPerformer", "  ", "testperformer") + "\n";
    };
    const std::string once = "  Guest                          guest.cpp\n";
    const std::string again = std::string(33, ' ') + "guest.cpp\n";
    VnTest::expectOutput("unloadedLevels", list(once) + list(once) + list(once + again));
}
