#include "child.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

using VnTest::Child;
using VnTest::ChildRun;

namespace
{
namespace fs = std::filesystem;

std::string contentOf(char const* path)
{
    std::ifstream stream(path, std::ios::binary);
    EXPECT_TRUE(stream) << path;
    return std::string(std::istreambuf_iterator<char>(stream), {});
}

/// With line ends as they are inside a program: Windows writes two characters for one.
std::string withPlainLines(std::string text)
{
    std::erase(text, '\r');
    return text;
}

ChildRun run(std::vector<std::string> arguments)
{
    Child child = Child::program("cuesheet");
    child.arguments(std::move(arguments)).without("VN_DEBUG_INITIALIZE");
    ChildRun result = child.run();
    result.out = withPlainLines(result.out);
    result.err = withPlainLines(result.err);
    return result;
}

/// A sheet of one's own, in a file for each test.
class CueSheetTest : public testing::Test
{
protected:
    CueSheetTest()
        : path((fs::current_path() / (std::string("cuesheet.") +
                                      testing::UnitTest::GetInstance()->current_test_info()->name() + ".cues"))
                   .string())
    {}

    ~CueSheetTest() override { fs::remove(path); }

    void write(std::string const& text) const { std::ofstream(path, std::ios::binary) << text; }

    /// The sheet's stored form at no rate in particular.
    ChildRun stored(std::string const& text) const
    {
        write(text);
        return run({"-s", path});
    }

    static void expectWrongUse(ChildRun const& run, std::string const& message)
    {
        EXPECT_EQ(run.exitCode, 2);
        EXPECT_EQ(run.err, "cuesheet: " + message + "; cuesheet -h tells more\n");
        EXPECT_EQ(run.out, "");
    }

    const std::string path;
};
}  // namespace

TEST_F(CueSheetTest, printsTheEveningAsTheReferenceDoes)
{
    const ChildRun result = run({VN_EVENING_SHEET});
    EXPECT_EQ(result.out, contentOf(VN_EVENING_TABLE));
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.exitCode, 0);
}

TEST_F(CueSheetTest, readsEveryFormExactly)
{
    const ChildRun result = stored("100 25 1 = stored\n7.5s = seconds\n8s\n00:00:09:00 @ pal = frames\n"
                                   "00:00:10:29@ntsc = more\n00:00:11:00 @ 24000/1001 = fraction\n-5 1 1=before\n");
    EXPECT_EQ(result.out, "-5 1 1 = before\n100 25 1 = stored\n75 10 1 = seconds\n8 1 1\n225 25 1 = frames\n"
                          "329 30000 1001 = more\n264 24000 1001 = fraction\n");
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.exitCode, 0);
}

TEST_F(CueSheetTest, storedSheetsReadBackAsTheyAre)
{
    const ChildRun first = run({"-s", VN_EVENING_SHEET});
    const ChildRun second = stored(first.out);
    EXPECT_EQ(first.exitCode, 0);
    EXPECT_EQ(second.out, first.out);
    EXPECT_FALSE(first.out.empty());
}

TEST_F(CueSheetTest, joinsTheSameInstantAndNothingNear)
{
    // 48048 samples are 30 frames; one sample later is another cue, although no float and no table of frames sees it.
    const ChildRun result = stored("30 30000 1001 = a\n48048 48000 1 = b\n48049 48000 1 = c\n1.001s\n");
    EXPECT_EQ(result.out, "30 30000 1001 = a / b\n48049 48000 1 = c\n");
}

TEST_F(CueSheetTest, namesEachLineThatCannotBeReadAndGoesOn)
{
    const struct
    {
        char const* line;
        char const* reason;
    } table[] = {
        {"nonsense = a", "'nonsense' is no time"},
        {"-x 25 1", "'-x 25 1' is no time"},
        {"= a name", "there is no time in front of the name"},
        {"1 25", "DtString conversion error: Rate denominator malformed."},
        {"1", "DtString conversion error: Rate numerator malformed."},
        {"1 99999999999 1", "DtString conversion error: Rate numerator overflow."},
        {"1 25 99999999999", "DtString conversion error: Rate denominator overflow."},
        {"1 0 1", "Null rate not allowed in DtTime."},
        {"1 25 0", "Illegal zero denominator."},
        {"1 -25 1", "the terms of a rate must lie between 1 and 100000"},
        {"1 100001 1", "the terms of a rate must lie between 1 and 100000"},
        {"2160001 25 1", "a sheet has 24 hours"},
        {"-2160001 25 1", "a sheet has 24 hours"},
        {"86401s", "the seconds can't be above 86400"},
        {"1.s", "'1.s' is no number of seconds"},
        {"s", "the seconds must be a whole number, not ''"},
        {"1.123456s", "seconds have five decimals at most"},
        {"1.-5s", "the decimals must be a whole number, not '-5'"},
        {"00:00:01:00", "hours:minutes:seconds:frames need '@' and a rate"},
        {"00:01:00 @ pal", "'00:01:00' isn't hours:minutes:seconds:frames"},
        {"00:60:00:00 @ pal", "the minutes can't be above 59"},
        {"00:00:60:00 @ pal", "the seconds can't be above 59"},
        {"00:00:00:25 @ pal", "the frames can't be above 24"},
        {"00:00:00:30 @ ntsc", "the frames can't be above 29"},
        {"99999999999999999999:00:00:00 @ pal", "the hours can't be above 24"},
        {"00:00:00:-1 @ pal", "the frames must be a whole number, not '-1'"},
        {"00:00:00:00 @ palm", "'palm' is no rate"},
        {"00:00:00:00 @ 0/1", "a rate can't have a zero"},
        {"00:00:00:00 @ 1/0", "a rate can't have a zero"},
        {"00:00:00:00 @ 1/2/3", "'1/2/3' is no rate"},
        {"1 99991 99989", "its rate is too far from the sheet's to convert exactly"},
    };
    std::string text = "# remark\n\n", expected;
    int number = 2;
    for (auto const& row : table) {
        text += std::string(row.line) + "\n";
        expected += path + ":" + std::to_string(++number) + ": " + row.reason + "\n";
    }
    const ChildRun result = stored(text + "3 25 1 = kept\r\n");
    EXPECT_EQ(result.err, expected);
    EXPECT_EQ(result.out, "3 25 1 = kept\n");
    EXPECT_EQ(result.exitCode, 1);
}

TEST_F(CueSheetTest, theLimitsThemselvesAreTaken)
{
    const ChildRun result = stored("2160000 25 1\n-2160000 25 1\n86400s\n0 100000 1\n");
    EXPECT_EQ(result.out, "-2160000 25 1\n0 100000 1\n2160000 25 1\n");
    EXPECT_EQ(result.err, "");
}

TEST_F(CueSheetTest, anEmptySheetIsASheet)
{
    write("");
    const ChildRun result = run({"-r", "pal", path});
    EXPECT_EQ(result.out, "       count           time         due in  float double  name\n\n0 cues at 25/1.\n"
                          "Kept as float seconds, 0 of 0 cues come back moved.\n"
                          "Kept as double seconds, 0 of 0 cues come back moved.\n");
    EXPECT_EQ(result.exitCode, 0);
}

TEST_F(CueSheetTest, anyBytesAreALine)
{
    write(std::string("\0\1\xff = x\n\0\n", 9) + std::string(100000, '9') +
          " 25 1\n1 25 1 = end without a line end");
    const ChildRun result = run({"-s", path});
    EXPECT_EQ(result.out, "1 25 1 = end without a line end\n");
    EXPECT_EQ(result.exitCode, 1);
}

TEST_F(CueSheetTest, helpIsNoFailure)
{
    for (char const* option : {"-h", "--help"}) {
        SCOPED_TRACE(option);
        const ChildRun result = run({option});
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_EQ(result.out.find("cuesheet [OPTION]... FILE\n"), 0u);
        EXPECT_NE(result.out.find("-r RATE "), std::string::npos);
        EXPECT_EQ(result.err, "");
    }
    EXPECT_EQ(run({"nothing.cues", "--help"}).exitCode, 0);
}

TEST_F(CueSheetTest, wrongUseIsToldApart)
{
    expectWrongUse(run({}), "FILE is missing");
    expectWrongUse(run({"a", "b"}), "unexpected argument 'b'");
    expectWrongUse(run({"-x", "a"}), "unknown option -x");
    expectWrongUse(run({"--rate", "a"}), "unknown option --rate");
    expectWrongUse(run({"-r"}), "a value is missing behind -r");
    expectWrongUse(run({"-r", "fast", VN_EVENING_SHEET}), "-r takes a rate, not 'fast'");
    expectWrongUse(run({"-r", "1/0", VN_EVENING_SHEET}), "-r takes a rate, not '1/0'");
    expectWrongUse(run({"no-such.cues"}), "there is no file no-such.cues");
    const std::string folder = fs::current_path().string();
    expectWrongUse(run({folder}), "there is no file " + folder);
}

TEST_F(CueSheetTest, oneTimeHasOneForm)
{
    // 3.5665 s exactly, and a tenth of a millisecond less; both columns round alike, halves away from zero.
    write("35665 10000 1 = a\n35664 10000 1 = b\n-35665 10000 1 = c\n71999.9999s = d\n0 1 1 = e\n-1 10000 1 = f\n");
    const ChildRun result = run({"-r", "10000", path});
    EXPECT_EQ(result.out.substr(0, result.out.find("\n\n") + 1),
              "       count           time         due in  float double  name\n"
              "      -35665   -0:00:03.567   -0:00:03.567     +0     +0  c\n"
              "          -1    0:00:00.000    0:00:00.000     +0     +0  f\n"
              "           0    0:00:00.000    0:00:00.000     +0     +0  e\n"
              "       35664    0:00:03.566    0:00:03.566     +0     +0  b\n"
              "       35665    0:00:03.567    0:00:03.567     +0     +0  a\n"
              "   719999999   20:00:00.000   20:00:00.000     +1     +0  d\n");
}

TEST_F(CueSheetTest, textsOfTheSheetReachATerminalWithTheirControlCharactersShown)
{
    write("1 25 1 = a\x1b[2Jb\nx\x1by = c\n");
    const ChildRun table = run({path});
    EXPECT_NE(table.out.find("  a\\x1b[2Jb\n"), std::string::npos) << table.out;
    EXPECT_EQ(table.err, path + ":2: 'x\\x1by' is no time\n");
    EXPECT_EQ(run({"-s", path}).out, "1 25 1 = a\x1b[2Jb\n") << "what is read again is as it was";
#if !defined(_WIN32)
    EXPECT_NE(
        Child::program("cuesheet").arguments({"-s", path}).runOnTerminal(80).out.find("1 25 1 = a\\x1b[2Jb\n"),
        std::string::npos);
#endif
}
