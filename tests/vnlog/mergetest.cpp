#include "logtext.h"

#include <logsource.h>
#include <merge.h>

#include <gtest/gtest.h>

#include <string>

using namespace VnLogTest;
using VnTest::ChildRun;
using VnTest::TempFolder;

TEST(VnLogMerge, offsetsAreTakenFromOperands)
{
    using vnlog::FileOperand;
    using vnlog::parseOperand;
    const struct
    {
        char const* operand;
        FileOperand expected;
    } table[] = {
        {"a.log", {"a.log", 0, false}},
        {"a.log:+0.012s", {"a.log", 12000000, true}},
        {"a.log:-3ms", {"a.log", -3000000, true}},
        {"a.log:+2", {"a.log", 2000000000, true}},
        {"a.log:+1.5us", {"a.log", 1500, true}},
        {"a.log:-7ns", {"a.log", -7, true}},
        {"a.log:+2m", {"a.log", 120000000000, true}},
        {"a.log:+1h", {"a.log", 3600000000000, true}},
        {"a.log:+0s", {"a.log", 0, true}},
        {"a:b:+1s", {"a:b", 1000000000, true}},
        {"C:\\a.log", {"C:\\a.log", 0, false}},
        {"a.log:3s", {"a.log:3s", 0, false}},
        {"a.log:+x", {"a.log:+x", 0, false}},
        {"a.log:+1d", {"a.log:+1d", 0, false}},
        {"a.log:+-1s", {"a.log:+-1s", 0, false}},
        {"a.log:+", {"a.log:+", 0, false}},
        {":+1s", {":+1s", 0, false}},
        {"a.log:+1000000h", {"a.log:+1000000h", 0, false}},
        {"-", {"-", 0, false}},
        {"-:+1s", {"-", 1000000000, true}},
    };
    for (auto const& row : table)
        EXPECT_EQ(parseOperand(row.operand), row.expected) << row.operand;
}

namespace
{
/// Two programs, a second apart.
struct TwoLogs
{
    TempFolder folder;
    std::string a = folder.file("a", bannerAt("17:17:56") + lineAt(500, "Warning", "A 1") + "of 1\n" +
                                         lineAt(3000, "Warning", "A 2") + stopBanner);
    std::string b =
        folder.file("b", bannerAt("17:17:57") + lineAt(500, "Warning", "B 1") + lineAt(4000, "Warning", "B 2"));
};
}  // namespace

TEST(VnLogMerge, linesStandInTheOrderOfTheirDates)
{
    const TwoLogs logs;
    const ChildRun run = runVnLog({"merge", "-n", "-d", "1", logs.b, logs.a});
    EXPECT_EQ(run.out, "2026-11-22 17:17:56.0 ===== Started on Sun Nov 22 17:17:56 2026\n"
                       "2026-11-22 17:17:56.5 (0x00001a2b) Warning: A 1\n"
                       "of 1\n"
                       "2026-11-22 17:17:57.0 ===== Started on Sun Nov 22 17:17:57 2026\n"
                       "2026-11-22 17:17:57.5 (0x00001a2b) Warning: B 1\n"
                       "2026-11-22 17:17:59.0 (0x00001a2b) Warning: A 2\n"
                       "2026-11-22 17:18:01.0 (0x00001a2b) Warning: B 2\n");
    EXPECT_EQ(run.exitCode, 0);
}

TEST(VnLogMerge, eachLineNamesItsFile)
{
    const TwoLogs logs;
    const std::string out = runVnLog({"merge", "-m", "B 2", logs.a, logs.b}).out;
    EXPECT_EQ(out, "2026-11-22 17:18:01.000000 [" + logs.b + "] (0x00001a2b) Warning: B 2\n");
}

TEST(VnLogMerge, anOffsetMovesAFile)
{
    const TwoLogs logs;
    const std::string out = runVnLog({"merge", "-n", "-d", "1", "-e", "[12]$", logs.a + ":+2s", logs.b}).out;
    EXPECT_EQ(out, "2026-11-22 17:17:57.5 (0x00001a2b) Warning: B 1\n"
                   "2026-11-22 17:17:58.5 (0x00001a2b) Warning: A 1\n"
                   "of 1\n"
                   "2026-11-22 17:18:01.0 (0x00001a2b) Warning: A 2\n"
                   "2026-11-22 17:18:01.0 (0x00001a2b) Warning: B 2\n");
}

TEST(VnLogMerge, withTicksTheOutputIsALogOfTheSameTimes)
{
    const TwoLogs logs;
    const std::string merged = runVnLog({"merge", "-s", "ticks", logs.a, logs.b}).out;
    EXPECT_EQ(merged, bannerAt("17:17:56") + lineAt(500, "Warning", "A 1") + "of 1\n" +
                          lineAt(1500, "Warning", "B 1") + lineAt(3000, "Warning", "A 2") +
                          lineAt(5000, "Warning", "B 2") + stopBanner);
}

TEST(VnLogMerge, neighboursCloserThanASecondAreDoubtedUnlessBothOffsetsAreGiven)
{
    const TwoLogs logs;
    // A 1 at 56.5 and the start of B at 57.0; B 1 at 57.5 and A 2 at 59.0; A 2 and B 2 at 61.0.
    const std::string err = runVnLog({"merge", logs.a, logs.b}).err;
    EXPECT_EQ(err.find("vnlog: 1 of 3 times that the file changes, the lines are closer than a second"), 0u) << err;
    EXPECT_EQ(runVnLog({"merge", logs.a + ":+0s", logs.b + ":+0s"}).err, "");
}

TEST(VnLogMerge, filesWithoutDatesAreToldAndKept)
{
    const TempFolder folder;
    const std::string stampless = folder.file("s", "===== Message Logger Startup =====\nNet a\n"),
                      bannerless = folder.file("b", lineAt(1, "Error", "Net b")),
                      whole = folder.file("w", bannerAt("17:17:56") + lineAt(1, "Error", "Net c"));
    const ChildRun run = runVnLog({"merge", "-n", "-d", "3", stampless, bannerless, whole});
    EXPECT_EQ(run.out, "Net a\n" + lineAt(1, "Error", "Net b") +
                           "2026-11-22 17:17:56.000 ===== Started on Sun Nov 22 17:17:56 2026\n"
                           "2026-11-22 17:17:56.001 (0x00001a2b) Error: Net c\n");
    EXPECT_NE(run.err.find("s': no message has a time stamp"), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("b': 1 messages have no time"), std::string::npos) << run.err;
    const ChildRun ticks = runVnLog({"merge", "-s", "ticks", bannerless});
    EXPECT_EQ(ticks.exitCode, 1);
    EXPECT_NE(ticks.err.find("no file begins with a banner"), std::string::npos) << ticks.err;
}

TEST(VnLogMerge, linesOfOneFileKeepTheirOrderAndThatIsTold)
{
    const TempFolder folder;
    const std::string path = folder.file("a", bannerAt("17:17:56") + lineAt(2, "Error", "Net a") +
                                                  lineAt(1, "Error", "Net b") + lineAt(3, "Error", "Net c"));
    const ChildRun run = runVnLog({"merge", "-n", "-d", "3", "-l", "Error", path});
    EXPECT_EQ(run.out, "2026-11-22 17:17:56.002 (0x00001a2b) Error: Net a\n"
                       "2026-11-22 17:17:56.001 (0x00001a2b) Error: Net b\n"
                       "2026-11-22 17:17:56.003 (0x00001a2b) Error: Net c\n");
    EXPECT_NE(run.err.find("1 messages are earlier than the one before them"), std::string::npos) << run.err;
}

TEST(VnLogMerge, aHalfLineIsEndedBeforeAnotherFilesLine)
{
    const TempFolder folder;
    std::string half = lineAt(1, "Error", "Net a");
    half.pop_back();
    const std::string a = folder.file("a", bannerAt("17:17:56") + half),
                      b = folder.file("b", bannerAt("17:17:56") + lineAt(2, "Error", "Net b"));
    EXPECT_EQ(runVnLog({"merge", "-s", "ticks", a, b}).out,
              bannerAt("17:17:56") + half + "\n" + lineAt(2, "Error", "Net b") + stopBanner);
}
