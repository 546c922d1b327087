#include <decimal.h>
#include <logline.h>

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <string_view>

using namespace vnlog;

TEST(LogLine, eachKindIsToldByItsBytes)
{
    const struct
    {
        char const* raw;
        Kind kind;
    } table[] = {
        {"0000000000 0000000005 (0x00001a2b) Warning: Net no answer", Kind::Message},
        {"0000000000 0000000005 (0x00001a2b) Warning: ", Kind::Message},
        {"0000000000 0000000005 (0x00001a2b) Informational: Event overflow [3]", Kind::Overflow},
        {"0000000000 0000000005 (0x00001a2b) Warning: Event overflow [3]", Kind::Message},
        {"0000000000 0000000005 (0x00001a2b) Informational: Event overflow [3] ", Kind::Message},
        {"0000000000 0000000005 (0x00001a2b) Informational: Event overflow []", Kind::Message},
        {"Event overflow [3]", Kind::Overflow},
        {"Event overflow [99999999999]", Kind::Plain},
        {"===== Message Logger Startup =====", Kind::Started},
        {"===== Message Logger Startup ===== ", Kind::Plain},
        {"===== Started on Sun Nov 22 17:17:56 2026", Kind::StartedOn},
        {"===== Clock Frequency: 0.000000001", Kind::ClockFrequency},
        {"===== Message Logger Stopped =====", Kind::Stopped},
        {"", Kind::Plain},
        {"Net no answer", Kind::Plain},
        {"0000000000 0000000005 (0x00001a2b) Warning Net no answer", Kind::Plain},
        {"0000000000 0000000005 (0x00001a2b) warning: Net no answer", Kind::Plain},
        {"0000000000 0000000005 (0x00001A2B) Warning: Net no answer", Kind::Plain},
        {"0000000000 0000000005 (0x00001a2b)", Kind::Plain},
        {"0000000000 0000000005 (0x00001a2b) ", Kind::Plain},
        {"0000000000 00000000x5 (0x00001a2b) Warning: Net no answer", Kind::Plain},
        {"4294967296 0000000005 (0x00001a2b) Warning: Net no answer", Kind::Plain},
        {"0000000000 4294967296 (0x00001a2b) Warning: Net no answer", Kind::Plain},
        {"000000000 0000000005 (0x00001a2b) Warning: Net no answer", Kind::Plain},
        {" 0000000000 0000000005 (0x00001a2b) Warning: Net no answer", Kind::Plain},
    };
    for (auto const& row : table)
        EXPECT_EQ(parseLine(row.raw).kind, row.kind) << row.raw;
}

TEST(LogLine, stampThreadAndMessageAreTakenApart)
{
    const std::string_view raw = "0000000001 0000000005 (0x00001a2b) Internal Error: Net no answer from 10.0.0.7";
    const LogLine line = parseLine(raw);
    EXPECT_TRUE(line.hasStamp);
    EXPECT_EQ(line.ticks, (std::uint64_t{1} << 32) + 5);
    EXPECT_EQ(line.thread, 0x1a2bu);
    EXPECT_EQ(line.level, 0);
    EXPECT_EQ(line.group, "Net");
    EXPECT_EQ(line.text, "no answer from 10.0.0.7");
    EXPECT_EQ(line.raw.data(), raw.data());
}

TEST(LogLine, theLargestStampIsRead)
{
    const LogLine line = parseLine("4294967295 4294967295 (0xffffffff) Error: A b");
    EXPECT_EQ(line.ticks, 0xffffffffffffffffu);
    EXPECT_EQ(line.thread, 0xffffffffu);
}

TEST(LogLine, eachLevelWordIsKnown)
{
    char const* const words[] = {"Internal Error", "Fatal Error", "Error",    "Warning",
                                 "Informational",  "Tracing",     "Profiling"};
    for (int level = 0; level < 7; ++level) {
        const std::string raw = std::string("0000000000 0000000005 (0x00000001) ") + words[level] + ": G text";
        EXPECT_EQ(parseLine(raw).level, level) << raw;
        EXPECT_EQ(parseLine(raw).text, "text") << raw;
        EXPECT_EQ(getLevelWord(level), words[level]);
    }
    EXPECT_EQ(getLevelWord(-1), "");
    EXPECT_EQ(getLevelWord(7), "");
}

TEST(LogLine, theGroupIsTheWordBeforeTheFirstBlank)
{
    const struct
    {
        char const* message;
        char const* group;
        char const* text;
    } table[] = {
        {"Net no answer", "Net", "no answer"},
        {"Net ", "Net", ""},
        {"Net  two blanks", "Net", " two blanks"},
        {"  | text", "", "  | text"},
        {"#", "", "#"},
        {"", "", ""},
        {"+ scan", "", "+ scan"},
        {"/", "", "/"},
        {"| 3 files", "", "| 3 files"},
        {">>> scan", "", ">>> scan"},
        {"+x y", "+x", "y"},
        {"<<< scan", "", "<<< scan"},
    };
    for (auto const& row : table) {
        const std::string raw = std::string("0000000000 0000000005 (0x00000001) Tracing: ") + row.message;
        const LogLine line = parseLine(raw);
        EXPECT_EQ(line.group, row.group) << raw;
        EXPECT_EQ(line.text, row.text) << raw;
    }
    EXPECT_EQ(parseLine("0000000000 0000000005 (0x00000001) Warning: + scan").group, "+") << "only the trace draws";
}

TEST(LogLine, anOverflowHasItsCountAndTheTextAsItStands)
{
    const LogLine stamped = parseLine("0000000000 0000000005 (0x00000001) Informational: Event overflow [12]");
    EXPECT_EQ(stamped.lost, 12);
    EXPECT_EQ(stamped.text, "Event overflow [12]");
    EXPECT_EQ(stamped.group, "");
    EXPECT_EQ(stamped.level, 4);
    const LogLine bare = parseLine("Event overflow [-3]");
    EXPECT_EQ(bare.lost, -3);
    EXPECT_FALSE(bare.hasStamp);
    EXPECT_EQ(bare.level, 4);
}

TEST(LogLine, aPlainLineHasNoStampAndNoLevelWhateverItResembles)
{
    const LogLine line = parseLine("0000000001 0000000005 (0x00001a2b) Nothing: Net no answer");
    EXPECT_FALSE(line.hasStamp);
    EXPECT_EQ(line.thread, 0u);
    EXPECT_EQ(line.level, -1);
    EXPECT_EQ(line.text, line.raw);
}

TEST(LogLine, bytesThatAreNoTextStayAsTheyAre)
{
    const std::string_view raw("0000000000 0000000005 (0x00000001) Error: G \0\xff\r\x1b", 48);
    const LogLine line = parseLine(raw);
    EXPECT_EQ(line.kind, Kind::Message);
    EXPECT_EQ(line.text, std::string_view("\0\xff\r\x1b", 4));
}

TEST(LogLine, datesAreReadInBothFormsOfTheDay)
{
    EXPECT_EQ(parseDate("Sun Nov 22 17:17:56 2026"), (Civil{2026, 11, 22, 17, 17, 56}));
    EXPECT_EQ(parseDate("Sun Nov  2 07:17:56 2026"), (Civil{2026, 11, 2, 7, 17, 56}));
    EXPECT_EQ(parseDate("Mon Feb 02 00:00:60 2026"), (Civil{2026, 2, 2, 0, 0, 60}));
    for (char const* text : {"", "Sun Nov 22 17:17:56", "Sun nov 22 17:17:56 2026", "Sun ovD 22 17:17:56 2026",
                             "Sun Nov 32 17:17:56 2026", "Sun Nov  0 17:17:56 2026", "Sun Nov 22 24:17:56 2026",
                             "Sun Nov 22 17:60:56 2026", "Sun Nov 22 17:17:61 2026", "Sun Nov 22 17:17:56 2026x",
                             "Sun Nov 22 17-17-56 2026", "Sun Nov -2 17:17:56 2026", "Sun Nov    17:17:56 2026"})
        EXPECT_FALSE(parseDate(text)) << text;
}

TEST(LogLine, aResolutionIsAPositiveNumberOfSeconds)
{
    EXPECT_EQ(parseResolution("0.000000001"), 0.000000001);
    EXPECT_EQ(parseResolution("0.000000100"), 0.0000001);
    for (char const* text : {"", "0.000000000", "-1.0", "inf", "nan", "0.1 s", "1e999"})
        EXPECT_FALSE(parseResolution(text)) << text;
}

TEST(LogLine, theCLibraryReadsADecimalAsTheStandardLibraryDoes)
{
    const struct
    {
        char const* text;
        int size;
        std::errc error;
        double value;
    } table[] = {
        {"", 0, std::errc::invalid_argument, 7},
        {" 1", 0, std::errc::invalid_argument, 7},
        {"+1", 0, std::errc::invalid_argument, 7},
        {"x", 0, std::errc::invalid_argument, 7},
        {".", 0, std::errc::invalid_argument, 7},
        {"0", 1, std::errc(), 0},
        {"-1.5s", 4, std::errc(), -1.5},
        {"0x10", 1, std::errc(), 0},
        {"1e-9", 4, std::errc(), 1e-9},
        {"1e999", 5, std::errc::result_out_of_range, 7},
        {"1e-999", 6, std::errc::result_out_of_range, 7},
        {"0e-999", 6, std::errc(), 0},
        {"inf", 3, std::errc(), HUGE_VAL},
    };
    for (auto const& row : table)
        for (auto* function : {&readDecimal, &readDecimalByCLibrary}) {
            const std::string_view text = row.text;
            double value = 7;
            const auto [end, error] = function(text.data(), text.data() + text.size(), value);
            EXPECT_EQ(end - text.data(), row.size) << text;
            EXPECT_EQ(error, row.error) << text;
            EXPECT_EQ(value, row.value) << text;
        }
    // Where the number's text ends is said by `end`, not by what stands there.
    double value = 0;
    const std::string digits = "123456";
    EXPECT_EQ(readDecimalByCLibrary(digits.data(), digits.data() + 3, value).ec, std::errc());
    EXPECT_EQ(value, 123);
}
