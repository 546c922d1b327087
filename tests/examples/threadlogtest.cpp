#include "child.h"
#include "lockname.h"
#include "logfile.h"
#include "tempfolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using VnTest::Child;
using VnTest::ChildRun;
using VnTest::linesOf;
using VnTest::LogLine;
using VnTest::TempFolder;

namespace
{
Child drawingThreadlog(TempFolder const& folder)
{
    Child child = Child::program("threadlog");
    child.with("T4Q_TEST_DIR", folder.path())
        .without("VN_LOG_WARNING")
        .without("VN_LOG_GROUPS")
        .without("VN_LOG_TRACING")
        .without("VN_TRACE_OPTIONS")
        .without("VN_BLOCKING_TRACE")
        .without("VN_LOG_DISABLE_TIMESTAMPS")
        .without("VN_INTERNAL_INTERPROCESS_LOG_LOCK")
        .without("VN_DEBUG_INITIALIZE");
    return child;
}

Child threadlog(TempFolder const& folder, int threads, int messages)
{
    return drawingThreadlog(folder).arguments(
        {"-q", "-t", std::to_string(threads), "-n", std::to_string(messages)});
}

/// What the messages of a log file say, once each of its lines has been found whole.
struct Content
{
    std::map<std::pair<unsigned, int>, int> messages;  ///< of each process and thread
    std::set<unsigned> threadIds;
    int banners = 0;
};

bool isBannerLine(std::string const& line)
{
    return line.empty() || line == "===== Message Logger Startup =====" ||
           line == "===== Message Logger Stopped =====" || line.starts_with("===== Started on ") ||
           line.starts_with("===== Clock Frequency: ");
}

/// Each thread's messages must be there, whole and in order.
void check(std::vector<std::string> const& lines, Content& content)
{
    for (std::string const& line : lines) {
        content.banners += line.starts_with("===== Message Logger ");
        if (isBannerLine(line))
            continue;
        const auto parsed = LogLine::parse(line);
        ASSERT_TRUE(parsed) << line;
        ASSERT_EQ(parsed->level, "Warning");
        std::istringstream words(parsed->text);
        std::string group, text;
        unsigned process = 0;
        int thread = -1, number = -1;
        words >> group >> process >> thread >> number >> text;
        ASSERT_EQ(group, "Work") << line;
        ASSERT_EQ(number, (content.messages[{process, thread}]++)) << line;
        const std::string letters = "abcdefghijklmnopqrstuvwxyz";
        ASSERT_EQ(text, letters.substr(static_cast<std::size_t>(number) % 26) + ".") << line;
        content.threadIds.insert(parsed->threadId);
    }
}

void runTogether(int processes, Child const& child)
{
    std::vector<std::thread> threads;
    for (int i = 0; i < processes; ++i)
        threads.emplace_back([&child] {
            const ChildRun run = child.run();
            EXPECT_EQ(run.exitCode, 0);
            EXPECT_EQ(run.err, "");
        });
    for (std::thread& thread : threads)
        thread.join();
}
}  // namespace

TEST(ThreadLogExample, eachThreadsMessagesAreThereInOrderAndNoneIsLost)
{
    const TempFolder folder;
    const ChildRun run = threadlog(folder, 6, 3000).run();
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.out + run.err, "");
    Content content;
    check(linesOf(folder.path("events.log")), content);
    EXPECT_EQ(content.messages.size(), 6u);
    for (auto const& [thread, count] : content.messages)
        EXPECT_EQ(count, 3000);
    EXPECT_EQ(content.threadIds.size(), 6u);
    EXPECT_EQ(content.banners, 2);
}

TEST(ThreadLogExample, groupsAndTraceAreSwitchedByTheEnvironment)
{
    const TempFolder folder;
    const ChildRun run = threadlog(folder, 1, 2)
                             .with("VN_LOG_GROUPS", "Example=Tracing")
                             .with("VN_TRACE_OPTIONS", "show=Work")
                             .with("VN_LOG_DISABLE_TIMESTAMPS", "1")
                             .run();
    EXPECT_EQ(run.out, "+ work\n  | message 0\n  | message 1\n  /\n");
    const std::vector<std::string> lines = linesOf(folder.path("events.log"));
    ASSERT_EQ(lines.size(), 6u);
    EXPECT_EQ(lines[2], "Work thread 0 is at 0");
    EXPECT_EQ(lines[4], "Work thread 0 is at 1");
}

TEST(ThreadLogExample, drawsALaneForEachThread)
{
    const TempFolder folder;
    const ChildRun run = Child::program("threadlog").with("T4Q_TEST_DIR", folder.path()).run();
    EXPECT_EQ(run.exitCode, 0);
    for (char const* thread : {"thread 1 |", "thread 2 |", "thread 3 |", "thread 4 |"})
        EXPECT_NE(run.out.find(thread), run.out.npos) << run.out;
    EXPECT_NE(run.out.find("| 1000 messages\n"), run.out.npos) << run.out;
    EXPECT_NE(run.out.find("events.log\n"), run.out.npos) << run.out;
}

TEST(ThreadLogExample, saysWhenThereIsNothingToDraw)
{
    const TempFolder folder;
    const Child program = drawingThreadlog(folder).arguments({"-n", "0"});
    const ChildRun none = program.run();
    EXPECT_EQ(none.out, "nothing to draw: no message with a time in " + folder.path("events.log") + "\n");
    EXPECT_EQ(none.exitCode, 0);
    const ChildRun noTimes = Child(program).arguments({"-n", "3"}).with("VN_LOG_DISABLE_TIMESTAMPS", "1").run();
    EXPECT_EQ(noTimes.out, none.out);
    const ChildRun noFile = Child(program).with("VN_LOG_WARNING", "%").run();
    EXPECT_NE(noFile.out.find("nothing to draw: the messages went to no file\n"), noFile.out.npos) << noFile.out;
    EXPECT_EQ(noFile.exitCode, 0);
}

TEST(ThreadLogExample, countsOutsideTheirLimitsAreRefused)
{
    const TempFolder folder;
    for (std::string const count : {"0", "-1", "257", "many"}) {
        const ChildRun run = threadlog(folder, 1, 1).arguments({"-t", count}).run();
        EXPECT_EQ(run.err, "threadlog: -t takes 1 to 256 threads, not '" + count + "'; threadlog -h tells more\n");
        EXPECT_EQ(run.exitCode, 2);
    }
    const ChildRun run = threadlog(folder, 1, 1).arguments({"-n", " -1"}).run();
    EXPECT_EQ(run.err, "threadlog: -n takes 0 or more messages, not ' -1'; threadlog -h tells more\n");
}

#if defined(__linux__)
TEST(ThreadLogExample, thePathOfTheLogIsShownAndNotObeyed)
{
    const TempFolder folder;
    const ChildRun run =
        drawingThreadlog(folder).arguments({"-n", "1"}).with("VN_LOG_WARNING", folder.path("a\x1b.log")).run();
    EXPECT_EQ(run.out.find('\x1b'), run.out.npos) << run.out;
    EXPECT_NE(run.out.find("a\\x1b.log\n"), run.out.npos) << run.out;
}
#endif

TEST(ThreadLogExample, processesShareAFileWithoutTearingALine)
{
    // The whole is a million lines; a slice of it where every test runs.
    const bool isWhole = std::getenv("VNBASE_LONG_TESTS") != nullptr;
    const int messages = isWhole ? 50000 : 500;
    constexpr int processes = 10, threads = 2;
    const TempFolder folder;
    const VnTest::LockName lock(folder);
    const std::string path = folder.path("shared.log");
    Child child = threadlog(folder, threads, messages)
                      .with("VN_LOG_WARNING", "+" + path)
                      .with("VN_INTERNAL_INTERPROCESS_LOG_LOCK", lock.get());
    runTogether(processes, child);
    Content content;
    check(linesOf(path), content);
    EXPECT_EQ(content.messages.size(), std::size_t{processes * threads});
    for (auto const& [thread, count] : content.messages)
        EXPECT_EQ(count, messages);
    EXPECT_EQ(content.banners, 2 * processes);
}

TEST(ThreadLogExample, helpTellsOfTheEnvironment)
{
    for (char const* option : {"-h", "--help"}) {
        const ChildRun run = Child::program("threadlog").arguments({option}).run();
        EXPECT_NE(run.out.find("VN_LOG_GROUPS"), std::string::npos);
        EXPECT_EQ(run.exitCode, 0);
    }
    EXPECT_EQ(Child::program("threadlog").arguments({"-t", "-1"}).run().exitCode, 2);
    EXPECT_EQ(Child::program("threadlog").arguments({"-x"}).run().exitCode, 2);
    EXPECT_EQ(Child::program("threadlog").arguments({"operand"}).run().exitCode, 2);
}
