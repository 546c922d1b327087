#include "logtext.h"

#include <gtest/gtest.h>

#include <string>

using namespace VnLogTest;
using VnTest::ChildRun;
using VnTest::TempFolder;

namespace
{
std::string statsOf(std::string const& text, std::vector<std::string> options = {})
{
    const TempFolder folder;
    options.insert(options.begin(), "stats");
    options.push_back(folder.file("a.log", text));
    const ChildRun run = runVnLog(options);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.exitCode, 0);
    return run.out;
}
}  // namespace

TEST(VnLogStats, messagesAreCountedByLevelGroupAndThread)
{
    const std::string text = bannerAt("17:17:56") + lineAt(0, "Warning", "Net a") + "foreign\n" +
                             lineAt(100, "Warning", "Net b") + lineAt(200, "Error", "Ui c", 0x2) +
                             lineAt(4000, "Informational", "Event overflow [7]") + stopBanner;
    // The columns begin at multiples of 64 ms since 1970, of which 17:17:56 is none: it is 32 ms behind one.
    EXPECT_EQ(statsOf(text, {"-z", "+01:00"}),
              "10 lines, " + std::to_string(text.size()) +
                  " bytes: 3 messages, 1 overflows, 5 of banners, 1 of others\n"
                  "1 starts, 1 stops, 7 messages lost\n"
                  "From 2026-11-22 18:17:56.000 to 2026-11-22 18:18:00.000, 4.000 s, 0.8 messages/s\n"
                  "Longest gap: 3.800 s, from 2026-11-22 18:17:56.200\n"
                  "Busiest second: 2026-11-22 18:17:56.000, 3 lines\n"
                  "\n"
                  "Level                        Messages      %       Lost   Messages/s     Peak/s  Longest gap/s\n"
                  "Error                               1  33.33          0            -          1          0.000\n"
                  "Warning                             2  66.67          0         20.0          2          0.100\n"
                  "Informational                       0   0.00          7            -          1          0.000\n"
                  "\n"
                  "Group                        Messages      %       Lost   Messages/s     Peak/s  Longest gap/s\n"
                  "Net                                 2  66.67          0         20.0          2          0.100\n"
                  "Ui                                  1  33.33          0            -          1          0.000\n"
                  "\n"
                  "Thread                       Messages      %       Lost   Messages/s     Peak/s  Longest gap/s\n"
                  "0x00001a2b                          2  66.67          7          0.5          2          3.900\n"
                  "0x00000002                          1  33.33          0            -          1          0.000\n"
                  "\n"
                  "Lines over time; a column is 0.064 s, the highest has 1\n"
                  "# ##                                                           #\n"
                  "# ##                                                           #\n"
                  "# ##                                                           #\n"
                  "# ##                                                           #\n"
                  "# ##                                                           #\n"
                  "# ##                                                           #\n"
                  "2026-11-22 18:17:55.968\n");
}

TEST(VnLogStats, longTablesAreCutAndSaySo)
{
    std::string text = bannerAt("17:17:56");
    for (int i = 0; i < 5; ++i)
        text += lineAt(1, "Error", "G" + std::to_string(i) + " x");
    const std::string cut = statsOf(text, {"-n", "2"}), whole = statsOf(text, {"-n", "0"});
    EXPECT_NE(cut.find("G1 "), std::string::npos);
    EXPECT_EQ(cut.find("G2 "), std::string::npos);
    EXPECT_NE(cut.find("and 3 more; -n 0 shows all\n"), std::string::npos);
    EXPECT_NE(whole.find("G4 "), std::string::npos);
}

TEST(VnLogStats, withoutADateTimesCountFromTheStart)
{
    const std::string out = statsOf("===== Message Logger Startup =====\n===== Started on Tuesday\n\n"
                                    "===== Clock Frequency: 0.001000000\n"
                                    "0000000000 0000000500 (0x00000001) Error: Net a\n"
                                    "0000000000 0000001500 (0x00000001) Error: Net b\n");
    EXPECT_NE(out.find("From 0.500 s to 1.500 s, 1.000 s, 2.0 messages/s\n"), std::string::npos) << out;
}

TEST(VnLogStats, filesWithoutTimesAreCountedAndThatIsTold)
{
    const std::string out = statsOf(lineAt(1, "Error", "Net a") + lineAt(2, "Error", "Net b"));
    EXPECT_NE(out.find(" 2 messages,"), std::string::npos) << out;
    EXPECT_NE(out.find("Some messages have no time"), std::string::npos) << out;
    EXPECT_EQ(out.find("Lines over time"), std::string::npos) << out;
}

TEST(VnLogStats, anEmptyFileHasEmptyTables)
{
    EXPECT_EQ(statsOf("").substr(0, 9), "0 lines, ");
}

TEST(VnLogStats, onlyChosenMessagesCount)
{
    const std::string out =
        statsOf(bannerAt("17:17:56") + lineAt(1, "Error", "Net a") + lineAt(1, "Warning", "Ui b"), {"-l", "Error"});
    EXPECT_NE(out.find(" 1 messages,"), std::string::npos) << out;
    EXPECT_EQ(out.find("Ui"), std::string::npos) << out;
}
