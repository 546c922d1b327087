#include "logtext.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

using namespace VnLogTest;
using VnTest::ChildRun;
using VnTest::TempFolder;

namespace
{
const std::string warning = lineAt(500, "Warning", "Net no answer"), more = "a further line of it\n",
                  error = lineAt(4294, "Error", "Ui bad"),
                  overflow = lineAt(5000, "Informational", "Event overflow [3]"),
                  profile = lineAt(6000, "Profiling", "Render 0.5", 0x1a2c);

/// A log with one of each.
std::string sample()
{
    return bannerAt("17:17:56") + warning + more + error + overflow + profile + stopBanner;
}

/// What show prints of the sample with these options.
std::string shown(std::vector<std::string> options)
{
    const TempFolder folder;
    options.insert(options.begin(), "show");
    options.push_back(folder.file("a.log", sample()));
    const ChildRun run = runVnLog(options);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.exitCode, 0);
    return run.out;
}

/// A running vnlog, whose output is read as it comes and as it is.
class Pipe
{
public:
    explicit Pipe(std::string const& arguments)
    {
        const std::string program = VnTest::getProgramFolder() + "/" + VN_LOG_PROGRAM + VnTest::programSuffix;
#ifdef _WIN32
        _stream = ::_popen(("\"\"" + program + "\" " + arguments + "\"").c_str(), "rb");
#else
        _stream = ::popen(("exec \"" + program + "\" " + arguments).c_str(), "r");
#endif
    }

    ~Pipe()
    {
        if (_stream != nullptr)
            close();
    }

    /// Blocks until there is a line; "" at the end.
    std::string getLine()
    {
        char text[1000];
        return std::fgets(text, sizeof text, _stream) != nullptr ? text : "";
    }

    /// Everything up to the end.
    std::string getRest()
    {
        std::string text;
        for (int c = std::fgetc(_stream); c != EOF; c = std::fgetc(_stream))
            text += static_cast<char>(c);
        return text;
    }

    int close()
    {
#ifdef _WIN32
        const int result = ::_pclose(_stream);
#else
        const int result = ::pclose(_stream);
#endif
        _stream = nullptr;
        return result;
    }

private:
    std::FILE* _stream = nullptr;
};

const std::string datedWarning = "2026-11-22 17:17:56.500000 (0x00001a2b) Warning: Net no answer\n",
                  datedError = "2026-11-22 17:18:00.294000 (0x00001a2b) Error: Ui bad\n",
                  datedOverflow = "2026-11-22 17:18:01.000000 (0x00001a2b) Informational: Event overflow [3]\n",
                  datedProfile = "2026-11-22 17:18:02.000000 (0x00001a2c) Profiling: Render 0.5\n";
}  // namespace

TEST(VnLogShow, ticksBecomeDatesAndAllElseStaysAsItIs)
{
    EXPECT_EQ(shown({}),
              bannerAt("17:17:56") + datedWarning + more + datedError + datedOverflow + datedProfile + stopBanner);
    EXPECT_EQ(shown({"-s", "ticks"}), sample());
}

TEST(VnLogShow, timesAreInTheZoneThatIsAskedFor)
{
    EXPECT_EQ(shown({"-z", "+05:30", "-l", "Error"}), "2026-11-22 22:48:00.294000 (0x00001a2b) Error: Ui bad\n");
    EXPECT_EQ(shown({"-Z", "+05:30", "-l", "Error"}), "2026-11-22 11:48:00.294000 (0x00001a2b) Error: Ui bad\n");
}

TEST(VnLogShow, timesCanCountFromTheStartOrFromTheLineBefore)
{
    EXPECT_EQ(shown({"-s", "start", "-d", "3", "-l", "Warning"}),
              "    0.500 (0x00001a2b) Warning: Net no answer\n" + more + "    4.294 (0x00001a2b) Error: Ui bad\n");
    EXPECT_EQ(shown({"-s", "before", "-d", "3", "-l", "Warning"}),
              "   +0.000 (0x00001a2b) Warning: Net no answer\n" + more + "   +3.794 (0x00001a2b) Error: Ui bad\n");
}

TEST(VnLogShow, optionsChooseMessagesAndTheirFurtherLines)
{
    const struct
    {
        std::vector<std::string> options;
        std::string out;
    } table[] = {
        {{"-l", "error"}, datedError},
        {{"-l", "Warning"}, datedWarning + more + datedError},
        {{"-l", "Tracing"}, datedWarning + more + datedError + datedOverflow},
        {{"-l", "Profiling"}, datedProfile},
        {{"-L", "Warning,profiling"}, datedWarning + more + datedProfile},
        {{"-l", "Error", "-L", "Profiling"}, datedError + datedProfile},
        {{"-g", "Net,Render"}, datedWarning + more + datedProfile},
        {{"-g", "?i"}, datedError},
        {{"-t", "0x1a2c"}, datedProfile},
        {{"-t", "6700"}, datedProfile},
        {{"-m", "no answer"}, datedWarning + more},
        {{"-m", "Net no"}, datedWarning + more},
        {{"-m", "NO ANSWER"}, ""},
        {{"-i", "-m", "NO ANSWER"}, datedWarning + more},
        {{"-i", "-m", "0.5"}, datedProfile},
        {{"-i", "-m", "0x5"}, ""},
        {{"-e", "^(Ui|Net) "}, datedWarning + more + datedError},
        {{"-e", "answer$"}, datedWarning + more},
        {{"-a", "17:18:01"}, datedOverflow + datedProfile},
        {{"-a", "+4.294", "-b", "+5"}, datedError},
        {{"-a", "2026-11-22T17:18", "-b", "2026-11-22T17:18:01"}, datedError},
        {{"-a", "2026-11-23"}, ""},
        {{"-l", "Error", "-x", "keep"}, more + datedError},
        {{"-l", "Warning", "-x", "drop"}, datedWarning + datedError},
    };
    for (auto const& row : table) {
        std::string what;
        for (std::string const& option : row.options)
            what += option + " ";
        EXPECT_EQ(shown(row.options), row.out) << what;
    }
}

TEST(VnLogShow, aLogWithoutStampsIsChosenByItsWords)
{
    const TempFolder folder;
    const std::string path =
        folder.file("a.log", "===== Message Logger Startup =====\nNet a\nUi b\nEvent overflow [2]\nNet c\n");
    EXPECT_EQ(runVnLog({"show", "-g", "Net", path}).out, "Net a\nNet c\n");
    EXPECT_EQ(runVnLog({"show", "-m", "b", path}).out, "Ui b\n");
    EXPECT_EQ(runVnLog({"show", "-L", "Informational", path}).out, "Event overflow [2]\n");
}

TEST(VnLogShow, bytesOfTheLogPassThroughUnchanged)
{
    const TempFolder folder;
    const std::string text = "\r\n\n\r" + std::string("a\0b\xff\r\n", 6) + std::string(600000, 'x') + "\nhalf";
    Pipe pipe("show \"" + folder.file("a.log", text) + "\"");
    EXPECT_EQ(pipe.getRest(), text + "\n");
}

TEST(VnLogShow, coloursStandAroundTheLevelWord)
{
    EXPECT_EQ(shown({"-c", "always", "-l", "Error", "-s", "start", "-d", "0"}),
              "\x1b[2m    4 (0x00001a2b) \x1b[0m\x1b[31mError\x1b[0m: Ui bad\n");
    EXPECT_EQ(shown({"-c", "auto", "-l", "Error"}), datedError);
}

TEST(VnLogShow, foreignLinesAreCountedOnStandardError)
{
    const TempFolder folder;
    const ChildRun run = runVnLog({"show", "-u", "-l", "Internal Error", folder.file("a.log", sample() + "x\n\n")});
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "vnlog: 3 of 12 lines are not the logger's, or have no time stamp\n");
}

TEST(VnLogShow, aFileThatHoldsTheProgramsOwnDefaultLogIsNotEmptied)
{
    const TempFolder folder;
    const std::string path = folder.file("events.log", sample());
    VnTest::Child child = VnTest::Child::program(VN_LOG_PROGRAM);
    const ChildRun run = child.arguments({"show", "-s", "ticks", path})
                             .with("T4Q_TEST_DIR", folder.path())
                             .with("VN_LOG_WARNING", path)
                             .with("VN_LOG_GROUPS", "A=Nonsense")
                             .run();
    EXPECT_EQ(run.out, sample());
    EXPECT_EQ(VnTest::contentOf(path), sample());
    EXPECT_FALSE(std::filesystem::exists(folder.path("prof.log")));
}

TEST(VnLogShow, whatCannotBeReadOrIsWrongIsRefusedInALine)
{
    const TempFolder folder;
    const std::string missing = folder.path("missing.log"), there = folder.file("a.log", sample());
    const struct
    {
        std::vector<std::string> arguments;
        int exitCode;
        char const* part;
    } table[] = {
        {{"show", missing}, 1, "missing.log': "},
        {{"show", "-l", "Wrong", there}, 2, "vnlog show: -l takes a level"},
        {{"show", "-z", "Atlantis/City", there}, 2, "-z takes local, UTC"},
        {{"show", "-a", "25:00", there}, 2, "-a takes a time"},
        {{"show", "-e", "(", there}, 2, "-e takes an extended regular expression"},
        {{"show", "-d", "10", there}, 2, "-d takes 0 to 9 digits"},
        {{"show", "-f", there, there}, 2, "-f follows one file, not 2"},
        {{"show", "-y", there}, 2, "unknown option -y"},
        {{"wrong"}, 2, "there is no command 'wrong'"},
        {{}, 2, "COMMAND"},
    };
    for (auto const& row : table) {
        const ChildRun run = runVnLog(row.arguments);
        EXPECT_EQ(run.exitCode, row.exitCode) << row.part;
        EXPECT_EQ(run.out, "") << row.part;
        EXPECT_NE(run.err.find(row.part), std::string::npos) << run.err;
        EXPECT_EQ(run.err.find('\n'), run.err.size() - 1) << run.err;
    }
}

TEST(VnLogShow, helpOfACommandTellsItsOptionsAlone)
{
    const ChildRun all = runVnLog({"-h"}), show = runVnLog({"show", "-h"}), merge = runVnLog({"merge", "--help"});
    EXPECT_EQ(all.exitCode, 0);
    EXPECT_NE(all.out.find("\n  show "), std::string::npos);
    EXPECT_EQ(all.out.find("-l LEVEL"), std::string::npos);
    EXPECT_NE(show.out.find("vnlog show [OPTION]... [FILE]...\n"), std::string::npos);
    EXPECT_NE(show.out.find("\n  -f "), std::string::npos);
    EXPECT_NE(merge.out.find("\n  -l LEVEL"), std::string::npos);
    EXPECT_EQ(merge.out.find("\n  -f "), std::string::npos);
}

namespace
{
void append(std::string const& path, std::string const& text)
{
    std::ofstream(path, std::ios::binary | std::ios::app) << text;
}
}  // namespace

TEST(VnLogShow, aFileIsFollowedThroughTruncationAndReplacementToItsStopBanner)
{
    const TempFolder folder;
    const std::string path = folder.file("a.log", "one\n");
    Pipe follower("show -f -q -s ticks \"" + path + "\"");
    EXPECT_EQ(follower.getLine(), "one\n");
    append(path, "tw");
    append(path, "o\n");
    EXPECT_EQ(follower.getLine(), "two\n");
    // Shorter than before, so that it cannot be taken for a file that has grown.
    std::ofstream(path, std::ios::binary | std::ios::trunc) << "3\n";
    EXPECT_EQ(follower.getLine(), "3\n");
    std::filesystem::rename(path, folder.path("a.log.1"));
    append(path, "new\n");
    EXPECT_EQ(follower.getLine(), "new\n");
    append(path, std::string(stopBanner));
    EXPECT_EQ(follower.getLine(), stopBanner);
    EXPECT_EQ(follower.getLine(), "");
    EXPECT_EQ(follower.close(), 0);
}

#ifndef _WIN32
TEST(VnLogShow, anInputThatIsTheOutputAsWellIsRefused)
{
    const TempFolder folder;
    const std::string path = folder.file("a.log", sample());
    std::filesystem::create_hard_link(path, folder.path("other name"));
    const std::string program = VnTest::getProgramFolder() + "/" + VN_LOG_PROGRAM + VnTest::programSuffix;
    for (char const* command : {"show", "merge", "stats"}) {
        const std::string line = "'" + program + "' " + command + " '" + path + "' >> '" +
                                 folder.path("other name") + "' 2> '" + folder.path("err") + "'";
        EXPECT_EQ(std::system(line.c_str()), 1 << 8) << command;
        EXPECT_NE(VnTest::contentOf(folder.path("err")).find("is the output as well"), std::string::npos);
        EXPECT_EQ(VnTest::contentOf(path), sample());
    }
}

TEST(VnLogShow, aFullDiskIsAFailure)
{
    const TempFolder folder;
    const std::string program = VnTest::getProgramFolder() + "/" + VN_LOG_PROGRAM + VnTest::programSuffix;
    const std::string line = "'" + program + "' show '" + folder.file("a.log", sample()) + "' > /dev/full 2> '" +
                             folder.path("err") + "'";
    EXPECT_EQ(std::system(line.c_str()), 1 << 8);
    EXPECT_NE(VnTest::contentOf(folder.path("err")).find("vnlog: cannot write to standard output: "),
              std::string::npos);
}

TEST(VnLogShow, onATerminalAPagerGetsTheLinesAndControlCharactersAreShown)
{
    const TempFolder folder;
    const std::string path = folder.file("a.log", lineAt(1, "Error", "Net \x1b[31mred\tx"));
    VnTest::Child child = VnTest::Child::program(VN_LOG_PROGRAM);
    const ChildRun run = child.arguments({"show", "-s", "ticks", path})
                             .with("PAGER", "sed s/^/paged:/")
                             .with("NO_COLOR", "1")
                             .without("VNLOG_NO_PAGER")
                             .without("VNLOG_COLOUR")
                             .runOnTerminal(80);
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.out, "paged:0000000000 0001000000 (0x00001a2b) Error: Net \\x1b[31mred\tx\n");
}

namespace
{
/// One line of a log, on a terminal.
ChildRun runOnTerminal(std::string const& path, std::vector<std::pair<std::string, std::string>> const& variables)
{
    VnTest::Child child = VnTest::Child::program(VN_LOG_PROGRAM);
    child.arguments({"show", "-s", "ticks", path}).with("TERM", "xterm");
    for (char const* name : {"VN_DEBUG_INITIALIZE", "VNLOG_NO_PAGER", "VNLOG_COLOUR", "NO_COLOR", "PAGER"})
        child.without(name);
    for (auto const& [name, value] : variables)
        child.with(name, value);
    return child.runOnTerminal(80);
}
}  // namespace

TEST(VnLogShow, aTerminalGetsColoursUnlessItOrItsUserHasNone)
{
    const TempFolder folder;
    const std::string line = lineAt(1, "Error", "Net a"), path = folder.file("a.log", line);
    EXPECT_NE(runOnTerminal(path, {{"PAGER", "cat"}}).out.find("\x1b[31mError\x1b[0m: Net a"), std::string::npos);
    EXPECT_EQ(runOnTerminal(path, {{"PAGER", "cat"}, {"NO_COLOR", "1"}}).out, line);
    EXPECT_EQ(runOnTerminal(path, {{"PAGER", "cat"}, {"TERM", "dumb"}}).out, line);
}

TEST(VnLogShow, whereTheUsualPagerIsMissingThereIsNone)
{
    const TempFolder folder;
    const std::string line = lineAt(1, "Error", "Net a"), path = folder.file("a.log", line);
    EXPECT_EQ(runOnTerminal(path, {{"PATH", folder.path()}, {"NO_COLOR", "1"}}).out, line);
}

TEST(VnLogShow, whoLeavesThePagerEndsTheReading)
{
    const TempFolder folder;
    std::string text;
    for (int i = 0; i < 100000; ++i)
        text += lineAt(1, "Error", "Net a");
    const ChildRun run = runOnTerminal(folder.file("a.log", text), {{"PAGER", "head -n 1"}, {"NO_COLOR", "1"}});
    EXPECT_EQ(run.out, lineAt(1, "Error", "Net a"));
    EXPECT_EQ(run.exitCode, 0);
}
#endif
