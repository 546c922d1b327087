// What the library writes, read by what reads it.
#include "child.h"
#include "tempfolder.h"

#include <logsource.h>

#include <threadlog/threadlog.h>

#include <base/hwintervaltimer.h>
#include <base/ininitmgr.h>
#include <base/lglog.h>
#include <base/lgtext.h>
#include <base/profiler.h>
#include <base/trace.h>

#include <gtest/gtest.h>

#include <ctime>
#include <map>
#include <set>
#include <string>
#include <thread>

using namespace vnlog;
using Vn::LgTypes;
using VnTest::Child;
using VnTest::TempFolder;

namespace
{
constexpr int messagesOfAThread = 500;

/// A child that writes all levels to one file.
Child writer(char const* body, std::string const& path)
{
    Child child(body);
    for (char const* level :
         {"INTERNAL_ERROR", "FATAL_ERROR", "RECOVERABLE_ERROR", "WARNING", "INFORMATIONAL", "TRACING", "PROFILING"})
        child.with(std::string("VN_LOG_") + level, "+" + path);
    return child.with("VN_LOG_GROUPS", "Test=Tracing,Test=Profiling")
        .with("VN_THREADLOG_WAIT", "all")
        .without("VN_TRACE_OPTIONS")
        .without("VN_DEBUG_INITIALIZE")
        .without("VN_LOG_DISABLE_TIMESTAMPS");
}
}  // namespace

VN_CHILD(writeAll)
{
    char const* const* arguments = argv;
    Vn::InInitGuard guard(argc, arguments);
    Vn::ThreadLog log;
    const Vn::LgMinorGroup group(Vn::LgMajorGroup::getInstanceForName("Test"), "Work");
    const auto work = [&group] {
        for (int i = 0; i < messagesOfAThread; ++i)
            VN_LOG(group, LgTypes::Level(i % 7), "number " << i);
    };
    std::thread other(work);
    work();
    other.join();
    VN_TRACE_ENTRY(*Vn::Trace::MainTraceLevel, "outer");
    {
        VN_TRACE_ENTRY(*Vn::Trace::MainTraceLevel, "inner");
        VN_TRACE(*Vn::Trace::MainTraceLevel, "a text");
    }
    return 0;
}

VN_CHILD(writeProfile)
{
    char const* const* arguments = argv;
    Vn::InInitGuard guard(argc, arguments);
    Vn::ThreadLog log;
    const Vn::LgMinorGroup group(Vn::LgMajorGroup::getInstanceForName("Test"), "Work");
    const Vn::Profiler<Vn::HwIntervalTimer> profiler("passes");
    VN_LOG(group, LgTypes::Profiling, static_cast<Vn::ProfilerBase const&>(profiler));
    return 0;
}

TEST(WrittenLog, eachLineOfTwoRunsIsRecognised)
{
    const TempFolder folder;
    const std::string path = folder.path("all.log");
    const std::time_t before = std::time(nullptr);
    for (int run = 0; run < 2; ++run)
        ASSERT_EQ(writer("writeAll", path).run().exitCode, 0);
    LogSource source(path);
    LogLine line;
    std::map<Kind, int> kinds;
    std::map<int, int> levels;
    std::set<std::pair<int, std::uint32_t>> threads;
    std::string traces;
    while (source.next(line)) {
        ++kinds[line.kind];
        EXPECT_TRUE(line.isWhole);
        if (line.kind != Kind::Message)
            continue;
        // The date of a banner has whole seconds.
        EXPECT_GE(source.getTime(line).value_or(0), before * std::int64_t{1000000000}) << line.raw;
        if (line.group == "Work") {
            ++levels[line.level];
            threads.emplace(line.run, line.thread);
        } else {
            EXPECT_EQ(line.level, LgTypes::Tracing) << line.raw;
            traces += line.run == 0 ? line.raw.back() : ' ';
        }
    }
    EXPECT_EQ(kinds, (std::map<Kind, int>{{Kind::Message, 2 * (2 * messagesOfAThread + 5)},
                                          {Kind::Started, 2},
                                          {Kind::StartedOn, 2},
                                          {Kind::Blank, 2},
                                          {Kind::ClockFrequency, 2},
                                          {Kind::Stopped, 2}}));
    for (int level = 0; level < 7; ++level)
        EXPECT_EQ(levels[level],
                  2 * 2 * (level < messagesOfAThread % 7 ? messagesOfAThread / 7 + 1 : messagesOfAThread / 7));
    EXPECT_EQ(threads.size(), 4u);
    // The ends of "+ outer", "+ inner", "| a text", "/" and "/"; blanks are of the second run.
    EXPECT_EQ(traces, "rrt//     ");
    EXPECT_TRUE(source.getRun(0).isStopped);
    EXPECT_TRUE(source.getRun(1).isStopped);
}

TEST(WrittenLog, aProfilerIsOneMessageWithFurtherLines)
{
    const TempFolder folder;
    const std::string path = folder.path("all.log");
    ASSERT_EQ(writer("writeProfile", path).run().exitCode, 0);
    LogSource source(path);
    LogLine line;
    std::string kinds, rows;
    while (source.next(line)) {
        kinds += line.kind == Kind::Message ? 'm' : line.kind == Kind::Plain ? 'p' : 'b';
        if (line.kind == Kind::Plain)
            rows += std::string(line.raw.substr(0, 20)) + "\n";
        if (line.kind == Kind::Message) {
            EXPECT_EQ(line.text, "Profiler passes:");
        }
    }
    EXPECT_EQ(kinds, "bbbbmppppppppb");
    EXPECT_EQ(rows, "        Nb of cycles\n        Total time  \n        Average time\n        Minimum time\n"
                    "        Maximum time\n        Standard dev\n\n\n");
}
