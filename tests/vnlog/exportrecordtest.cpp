#include "tempfolder.h"

#include <exportrecord.h>

#include <gtest/gtest.h>

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
constexpr std::int64_t bannerTime = 1'795'367'876'000'000'000;  // in UTC

std::string stamped(unsigned ticks, char const* level, std::string const& message)
{
    const std::string lower = std::to_string(ticks);
    return "0000000000 " + std::string(10 - lower.size(), '0') + lower + " (0x00000001) " + level + ": " + message +
           "\n";
}

std::vector<Record> recordsOf(std::string const& log, RecordReader::Lines lines = RecordReader::Lines::Joined)
{
    const TempFolder folder;
    LogSource source(folder.file("test.log", log), Zone());
    RecordReader reader(source, lines);
    std::vector<Record> records;
    for (Record record; reader.next(record);) {
        record.file = {};
        records.push_back(record);
    }
    return records;
}

std::vector<std::string> textsOf(std::vector<Record> const& records)
{
    std::vector<std::string> texts;
    for (Record const& record : records)
        texts.push_back(record.getMessage());
    return texts;
}
}  // namespace

TEST(RecordReader, aBannerIsOneRecordWithItsDate)
{
    const std::vector<Record> records = recordsOf(std::string("x\n") + banner + stamped(7, "Error", "A b"));
    ASSERT_EQ(records.size(), 3u);
    EXPECT_EQ(records[0].kind, Kind::Plain);
    EXPECT_EQ(records[0].run, -1);
    EXPECT_FALSE(records[0].nearTime);
    EXPECT_EQ(records[1].kind, Kind::Started);
    EXPECT_EQ(records[1].text + "\n", banner);
    EXPECT_EQ(records[1].line, 2u);
    EXPECT_EQ(records[1].lines, 4u);
    EXPECT_EQ(records[1].time, bannerTime);
    EXPECT_EQ(records[2].line, 6u);
    EXPECT_EQ(records[2].time, bannerTime + 7);
    EXPECT_EQ(records[2].sinceStart, 7);
    EXPECT_EQ(records[2].group, "A");
    EXPECT_EQ(records[2].text, "b");
}

TEST(RecordReader, linesWithoutAStampBelongToTheMessageBefore)
{
    const std::string log = stamped(1, "Error", "A first") + "second\n\nfourth\n" + stamped(2, "Error", "A next") +
                            stamped(3, "Informational", "Event overflow [2]") + "alone\n" +
                            "===== Message Logger Stopped =====\nbehind\n";
    const std::vector<Record> joined = recordsOf(log);
    EXPECT_EQ(textsOf(joined),
              (std::vector<std::string>{"A first\nsecond\n\nfourth", "A next", "Event overflow [2]", "alone",
                                        "===== Message Logger Stopped =====", "behind"}));
    EXPECT_EQ(joined[0].lines, 4u);
    EXPECT_EQ(joined[1].line, 5u);
    const std::vector<Record> single = recordsOf(log, RecordReader::Lines::Single);
    EXPECT_EQ(textsOf(single),
              (std::vector<std::string>{"A first", "second", "", "fourth", "A next", "Event overflow [2]", "alone",
                                        "===== Message Logger Stopped =====", "behind"}));
}

TEST(RecordReader, aMessageIsJoinedUpToTheLengthThatItCanHave)
{
    // "A " and the text and a line end and one more line: 32,767 bytes, or one more.
    const std::string text(RecordReader::longestMessage - 2 - 1 - 4, 'x');
    EXPECT_EQ(recordsOf(stamped(1, "Error", "A " + text) + "last\n").size(), 1u);
    EXPECT_EQ(recordsOf(stamped(1, "Error", "A " + text) + "last!\n").size(), 2u);
}

TEST(RecordReader, aDrawnStepHasOneLine)
{
    const std::vector<Record> records =
        recordsOf(stamped(1, "Tracing", "+ f") + "other\n" + stamped(2, "Tracing", "  | text") + "more\n" +
                  stamped(3, "Tracing", "  /") + "other\n");
    EXPECT_EQ(textsOf(records), (std::vector<std::string>{"+ f", "other", "  | text\nmore", "  /", "other"}));
    EXPECT_EQ(records[0].drawing.step, TraceStep::Enter);
    EXPECT_EQ(records[0].drawing.text, "f");
    EXPECT_EQ(records[2].drawing.text, "text\nmore");
    EXPECT_EQ(records[3].drawing.step, TraceStep::Leave);
    for (Record const& record : records)
        EXPECT_EQ(record.group, "");
}

TEST(RecordReader, onlyTracingIsADrawing)
{
    const std::vector<Record> records = recordsOf(stamped(1, "Warning", "+ f") + stamped(2, "Tracing", "Group f"));
    EXPECT_EQ(records[0].drawing.step, TraceStep::None);
    EXPECT_EQ(records[0].group, "+");
    EXPECT_EQ(records[1].drawing.step, TraceStep::None);
    EXPECT_EQ(records[1].group, "Group");
}

TEST(RecordReader, aLossMakesTheNextDrawingCountMoreThanTheOpenCalls)
{
    const std::string before = stamped(1, "Tracing", "+ f");
    const std::string loss = stamped(2, "Informational", "Event overflow [2]");
    const std::string behind = stamped(3, "Tracing", "  | + g");
    EXPECT_EQ(recordsOf(before + behind).back().drawing.step, TraceStep::Text);
    EXPECT_EQ(recordsOf(before + loss + behind).back().drawing.step, TraceStep::Enter);
    EXPECT_EQ(recordsOf(before + loss + behind).back().drawing.unseen, 1u);
    // What is left of a text that found no room.
    EXPECT_EQ(recordsOf(before + stamped(2, "Tracing", "#") + behind).back().drawing.step, TraceStep::Enter);
    EXPECT_EQ(recordsOf(before + stamped(2, "Warning", "#") + behind).back().drawing.step, TraceStep::Text);
}

TEST(RecordReader, runsHaveCallsOfTheirOwn)
{
    const std::vector<Record> records =
        recordsOf(banner + stamped(1, "Tracing", "+ f") + "===== Message Logger Stopped =====\n" + banner +
                  stamped(1, "Tracing", "  | + g"));
    EXPECT_EQ(records.back().drawing.step, TraceStep::Enter);
    EXPECT_EQ(records.back().drawing.unseen, 2u);
}

TEST(RecordReader, whatHasNoTimeIsNearTheRecordBefore)
{
    const std::vector<Record> records =
        recordsOf(banner + stamped(7, "Error", "A b") + "===== Message Logger Stopped =====\nbehind");
    ASSERT_EQ(records.size(), 4u);
    EXPECT_EQ(records[2].kind, Kind::Stopped);
    EXPECT_FALSE(records[2].time);
    EXPECT_EQ(records[2].nearTime, bannerTime + 7);
    EXPECT_EQ(records[3].nearTime, bannerTime + 7);
    EXPECT_TRUE(records[2].isWhole);
    EXPECT_FALSE(records[3].isWhole);
}

TEST(RecordReader, aLineInPiecesIsARecordForEach)
{
    const std::string text(LogSource::longestPiece * 2, 'x');
    const std::vector<Record> records = recordsOf(stamped(7, "Error", "A " + text) + stamped(8, "Error", "A b"));
    ASSERT_EQ(records.size(), 4u);
    EXPECT_FALSE(records[0].isFurther);
    EXPECT_FALSE(records[0].isWhole);
    EXPECT_EQ(records[0].group, "A");
    std::string all = records[0].text;
    for (std::size_t i = 1; i < 3; ++i) {
        EXPECT_TRUE(records[i].isFurther);
        EXPECT_EQ(records[i].ticks, 7u);
        EXPECT_EQ(records[i].line, 1u);
        EXPECT_EQ(records[i].isWhole, i == 2);
        all += records[i].getMessage();
    }
    EXPECT_TRUE(all == text);
    EXPECT_EQ(records[3].ticks, 8u);
}
