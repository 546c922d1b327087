#include "tempfolder.h"

#include <logsource.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

using namespace vnlog;
using VnTest::TempFolder;

namespace
{
constexpr char const* banner = "===== Message Logger Startup =====\n"
                               "===== Started on Sun Nov 22 17:17:56 2026\n"
                               "\n"
                               "===== Clock Frequency: 0.000000001\n";
constexpr char const* stopped = "===== Message Logger Stopped =====\n";
constexpr std::time_t bannerTime = 1795367876;  // in UTC

std::string stamped(unsigned seconds, char const* thread, std::string const& message)
{
    const std::string ticks = std::to_string(std::uint64_t{seconds} * 1000000000 >> 32);
    const std::string lower = std::to_string(std::uint64_t{seconds} * 1000000000 & 0xffffffff);
    return std::string(10 - ticks.size(), '0') + ticks + " " + std::string(10 - lower.size(), '0') + lower +
           " (0x000000" + thread + ") Warning: " + message + "\n";
}

/// What was read, with texts of its own.
struct Copy
{
    std::string raw, end, text;
    LogLine line;
};

std::vector<Copy> allOf(LogSource& source)
{
    std::vector<Copy> lines;
    LogLine line;
    while (source.next(line))
        lines.push_back({std::string(line.raw), std::string(line.end), std::string(line.text), line});
    return lines;
}

std::string bytesOf(std::vector<Copy> const& lines)
{
    std::string bytes;
    for (Copy const& copy : lines)
        bytes += copy.raw + copy.end;
    return bytes;
}

void append(std::string const& path, std::string const& text)
{
    std::ofstream(path, std::ios::binary | std::ios::app) << text;
}
}  // namespace

TEST(LogSource, eachByteIsInOneLine)
{
    const std::string longest = std::string(LogSource::longestPiece, 'x');
    const std::string texts[] = {"",
                                 "\n",
                                 "half",
                                 "one\ntwo\r\nthree",
                                 "\r\n\r\r\n\r",
                                 std::string("\0a\n\xff\n", 5),
                                 longest + "\n",
                                 longest + "yz\nmore\n",
                                 longest + longest + longest,
                                 longest.substr(1) + "\r\nmore",
                                 longest.substr(1) + "\rmore\n",
                                 banner + longest + "\n" + stopped};
    const TempFolder folder;
    for (std::string const& text : texts) {
        LogSource source(folder.file("log", text), Zone());
        const std::vector<Copy> lines = allOf(source);
        EXPECT_EQ(bytesOf(lines), text) << text.substr(0, 40) << ", " << text.size() << " bytes";
        std::uint64_t ends = 0, wholes = 0;
        for (const char c : text)
            ends += c == '\n' ? 1u : 0u;
        for (Copy const& copy : lines)
            wholes += copy.line.isWhole ? 1u : 0u;
        EXPECT_EQ(wholes, ends);
    }
}

TEST(LogSource, aLongLineComesInPiecesThatShareItsStamp)
{
    const TempFolder folder;
    std::string message = stamped(5, "01", "Net " + std::string(3 * LogSource::longestPiece, 'x'));
    LogSource source(folder.file("log", banner + message + "next\n"), Zone());
    std::vector<Copy> lines = allOf(source);
    lines.erase(lines.begin(), lines.begin() + 4);
    ASSERT_EQ(lines.size(), 5u);
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(lines[i].line.kind, Kind::Message);
        EXPECT_EQ(lines[i].line.ticks, 5000000000u);
        EXPECT_EQ(lines[i].line.number, 5u);
        EXPECT_EQ(lines[i].line.isStart, i == 0);
        EXPECT_EQ(lines[i].line.isWhole, i == 3);
    }
    EXPECT_EQ(lines[4].line.kind, Kind::Plain);
    EXPECT_EQ(lines[4].line.number, 6u);
    EXPECT_TRUE(lines[4].line.isStart);
}

TEST(LogSource, aLineOfThirtyTwoThousandCharactersIsWholeWhereverItLies)
{
    const TempFolder folder;
    const std::string message = stamped(1, "01", "Net " + std::string(32762, 'm'));
    std::string text;
    for (int i = 0; i < 40; ++i)
        text += message;
    LogSource source(folder.file("log", text), Zone());
    const std::vector<Copy> lines = allOf(source);
    ASSERT_EQ(lines.size(), 40u);
    for (Copy const& copy : lines) {
        EXPECT_TRUE(copy.line.isWhole);
        EXPECT_EQ(copy.text.size(), 32762u);
    }
}

TEST(LogSource, theEmptyLineOfABannerIsNoForeignLine)
{
    const TempFolder folder;
    LogSource source(folder.file("log", std::string(banner) + "\n" + stopped), Zone());
    const std::vector<Copy> lines = allOf(source);
    ASSERT_EQ(lines.size(), 6u);
    EXPECT_EQ(lines[2].line.kind, Kind::Blank);
    EXPECT_EQ(lines[4].line.kind, Kind::Plain);
}

TEST(LogSource, theTimeOfALineIsItsBannersDateAndItsTicks)
{
    const TempFolder folder;
    LogSource source(folder.file("log", banner + stamped(5, "01", "Net a")), Zone::parse("+01:00"));
    const std::vector<Copy> lines = allOf(source);
    EXPECT_EQ(source.getTime(lines.back().line), (bannerTime - 3600 + 5) * std::int64_t{1000000000});
    EXPECT_EQ(source.getSinceStart(lines.back().line), 5000000000);
    EXPECT_EQ(source.getRun(0).started, bannerTime - 3600);
    EXPECT_EQ(source.getRun(0).nanoseconds, 1);
    EXPECT_FALSE(source.getTime(lines.front().line));
}

TEST(LogSource, aLineHasNoTimeWithoutABannerThatTellsIt)
{
    const struct
    {
        char const* what;
        std::string before;
        bool hasSinceStart;
    } table[] = {
        {"no banner", "", false},
        {"no stamps", "===== Message Logger Startup =====\n", false},
        {"unreadable date",
         "===== Message Logger Startup =====\n===== Started on Tuesday\n\n===== Clock Frequency: 0.000000001\n",
         true},
        {"resolution of zero",
         "===== Message Logger Startup =====\n===== Started on Sun Nov 22 17:17:56 2026\n\n"
         "===== Clock Frequency: 0.000000000\n",
         false},
    };
    const TempFolder folder;
    for (auto const& row : table) {
        SCOPED_TRACE(row.what);
        LogSource source(folder.file("log", row.before + stamped(5, "01", "Net a")), Zone());
        const LogLine line = allOf(source).back().line;
        EXPECT_FALSE(source.getTime(line));
        EXPECT_EQ(source.getSinceStart(line).has_value(), row.hasSinceStart);
    }
}

TEST(LogSource, ticksBeyondTheLargestTimeHaveNone)
{
    const TempFolder folder;
    const std::string slow = "===== Message Logger Startup =====\n===== Started on Sun Nov 22 17:17:56 2026\n\n"
                             "===== Clock Frequency: 1000000.000000000\n";
    LogSource source(folder.file("log", slow + "4294967295 4294967295 (0x00000001) Error: A b\n"), Zone());
    EXPECT_FALSE(source.getTime(allOf(source).back().line));
}

TEST(LogSource, runsAreCountedAndStop)
{
    const TempFolder folder;
    const std::string line = stamped(1, "01", "Net a");
    LogSource source(folder.file("log", line + banner + line + stopped + banner + line), Zone());
    std::vector<int> runs;
    for (Copy const& copy : allOf(source))
        if (copy.line.kind == Kind::Message)
            runs.push_back(copy.line.run);
    EXPECT_EQ(runs, (std::vector<int>{-1, 0, 1}));
    EXPECT_EQ(source.getRunCount(), 2);
    EXPECT_TRUE(source.getRun(0).isStopped);
    EXPECT_FALSE(source.getRun(1).isStopped);
    EXPECT_FALSE(source.getRun(-1).hasStamps);
    EXPECT_FALSE(source.getRun(2).hasStamps);
}

TEST(LogSource, threadsOfAProcessThatGoesOnStayItsOwnBehindAnothersBanner)
{
    const TempFolder folder;
    std::string later = banner;
    later.replace(later.find("17:17:56"), 8, "17:18:56");
    LogSource source(folder.file("log", banner + stamped(59, "0a", "Net a") + later + stamped(61, "0a", "Net b") +
                                            stamped(1, "0b", "Net c") + stamped(62, "0a", "Net d") + stopped +
                                            stamped(2, "0b", "Net e")),
                     Zone());
    std::string runs;
    for (Copy const& copy : allOf(source))
        if (copy.line.kind == Kind::Message)
            runs += copy.text + std::to_string(copy.line.run);
    EXPECT_EQ(runs, "a0b0c1d0e1");
}

TEST(LogSource, aThreadIdThatANewProcessHasAgainBelongsToTheNewOne)
{
    const TempFolder folder;
    std::string later = banner;
    later.replace(later.find("17:17:56"), 8, "18:17:56");
    // The first process died without a stop banner, and the second one's time is behind its last line's.
    LogSource source(folder.file("log", banner + stamped(1, "0a", "Net a") + later + stamped(2, "0a", "Net b")),
                     Zone());
    EXPECT_EQ(allOf(source).back().line.run, 1);
}

TEST(LogSource, onlyTheLastRunsAreKept)
{
    const TempFolder folder;
    std::string text;
    for (int i = 0; i <= LogSource::keptRuns; ++i)
        text += banner;
    LogSource source(folder.file("log", text), Zone());
    allOf(source);
    EXPECT_EQ(source.getRunCount(), LogSource::keptRuns + 1);
    EXPECT_FALSE(source.getRun(0).hasStamps);
    EXPECT_TRUE(source.getRun(1).hasStamps);
    EXPECT_TRUE(source.getRun(LogSource::keptRuns).hasStamps);
}

TEST(LogSource, aHalfLineWaitsForItsEndWhileFollowing)
{
    const TempFolder folder;
    const std::string path = folder.file("log", "one\ntw");
    LogSource source(path, Zone());
    source.follow();
    EXPECT_EQ(bytesOf(allOf(source)), "one\n");
    EXPECT_FALSE(source.renew());
    append(path, "o\nthree");
    EXPECT_EQ(bytesOf(allOf(source)), "two\n");
}

TEST(LogSource, aFileThatIsBegunAnewIsReadFromItsStart)
{
    const TempFolder folder;
    const std::string path = folder.file("log", "one\nhalf");
    LogSource source(path, Zone());
    source.follow();
    EXPECT_EQ(bytesOf(allOf(source)), "one\n");
    std::ofstream(path, std::ios::binary | std::ios::trunc) << "new\n";
    EXPECT_TRUE(source.renew());
    const std::vector<Copy> lines = allOf(source);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].raw, "half");
    EXPECT_FALSE(lines[0].line.isWhole);
    EXPECT_EQ(lines[1].raw, "new");
    EXPECT_FALSE(source.renew());
}

TEST(LogSource, aFileThatTakesTheNameIsReadBehindTheLastLinesOfTheOldOne)
{
    const TempFolder folder;
    const std::string path = folder.file("log", "one\n");
    LogSource source(path, Zone());
    source.follow();
    EXPECT_EQ(bytesOf(allOf(source)), "one\n");
    std::filesystem::rename(path, folder.path("log.1"));
    EXPECT_FALSE(source.renew());
    append(folder.path("log.1"), "late\n");
    append(path, "new\n");
    std::string bytes;
    while (source.renew())
        bytes += bytesOf(allOf(source));
    EXPECT_EQ(bytes, "late\nnew\n");
}

TEST(LogSource, whatCannotBeReadIsNamedWithTheReason)
{
    const TempFolder folder;
    for (std::string const& path : {folder.path("missing"), folder.folder("folder")})
        try {
            LogSource source(path);
            FAIL() << path;
        } catch (std::runtime_error const& failure) {
            EXPECT_NE(std::string(failure.what()).find(path), std::string::npos) << failure.what();
        }
}
