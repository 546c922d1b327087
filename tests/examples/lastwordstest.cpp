#include "child.h"
#include "logfile.h"
#include "tempfolder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using VnTest::Child;
using VnTest::ChildRun;
using VnTest::TempFolder;

namespace
{
Child lastWords(TempFolder const& folder, std::vector<std::string> arguments)
{
    Child child = Child::program("lastwords");
    child.arguments(std::move(arguments))
        .with("T4Q_TEST_DIR", folder.path())
        .without("VN_LOG_WARNING")
        .without("VN_LOG_TRACING")
        .without("VN_TRACE_OPTIONS")
        .without("VN_LOG_DISABLE_TIMESTAMPS");
    return child;
}

/// What the messages say, without time and thread.
std::vector<std::string> textsOf(std::string const& path)
{
    std::vector<std::string> texts;
    for (std::string const& line : VnTest::linesOf(path))
        if (const auto message = VnTest::LogLine::parse(line))
            texts.push_back(message->text);
    return texts;
}
}  // namespace

TEST(LastWords, areInTheLogOfAProgramThatHasCrashed)
{
    const TempFolder folder;
    const ChildRun run = lastWords(folder, {"-n", "Bob", "-x"}).run();
    EXPECT_TRUE(run.crashed);
    EXPECT_EQ(textsOf(folder.path("events.log")),
              (std::vector<std::string>{"Speech Bob: good morning 1", "Speech Bob: good morning 2",
                                        "Speech Bob: good night 1", "Speech Bob: good night 2"}));
}

TEST(LastWords, comeFromTwoThreadsWithTheirTrace)
{
    const TempFolder folder;
    const std::string trace = folder.path("trace.log");
    const ChildRun run =
        lastWords(folder, {"-c", "1"}).with("VN_TRACE_OPTIONS", "show=Speech").with("VN_LOG_TRACING", trace).run();
    EXPECT_EQ(run.out + run.err, "");
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(textsOf(folder.path("events.log")),
              (std::vector<std::string>{"Speech Ada: good morning 1", "Speech Ada: good night 1"}));
    EXPECT_EQ(textsOf(trace), (std::vector<std::string>{"+ speak", "  /", "+ speak", "  /"}));
}

TEST(LastWords, explainsItselfAndRefusesWhatItDoesntKnow)
{
    const TempFolder folder;
    const ChildRun help = lastWords(folder, {"-h"}).run();
    EXPECT_EQ(help.exitCode, 0);
    for (char const* part : {"Speaks in two threads", "-n NAME", "-c COUNT", "-x"})
        EXPECT_NE(help.out.find(part), std::string::npos) << part << " is missing in\n" << help.out;
    const ChildRun typo = lastWords(folder, {"-c", "twice"}).run();
    EXPECT_EQ(typo.exitCode, 2);
    EXPECT_NE(typo.err.find("-c"), std::string::npos) << typo.err;
}
