#include <exportformat.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <memory>
#include <sstream>
#include <string>

using namespace vnlog;

namespace
{
using Make = std::function<std::unique_ptr<ExportFormat>(std::ostream&)>;

/// Longer than a batch of any form.
constexpr int manyRecords = 600;

std::string written(Make const& make, Record const& record, int count = 1)
{
    std::ostringstream stream;
    const auto format = make(stream);
    for (int i = 0; i < count; ++i)
        format->add(record, vnlog::Run());
    format->finish();
    return stream.str();
}

std::unique_ptr<ExportFormat> makeJournal(std::ostream& stream)
{
    return makeJournalFormat(stream, {"program"});
}

std::unique_ptr<ExportFormat> makeOtlp(std::ostream& stream)
{
    return makeOtlpFormat(stream, {"program"});
}

std::unique_ptr<ExportFormat> makeChrome(std::ostream& stream)
{
    return makeChromeFormat(stream, 0);
}

Record messageOf(std::string const& text)
{
    Record record;
    record.kind = Kind::Message;
    record.file = "a.log";
    record.line = 5;
    record.run = 0;
    record.hasStamp = true;
    record.ticks = 7;
    record.thread = 1;
    record.level = 3;
    record.group = "A";
    record.text = text;
    record.time = record.nearTime = 1'000'000'007;
    record.sinceStart = 7;
    return record;
}

std::ptrdiff_t countOf(std::string const& text, char character)
{
    return std::count(text.begin(), text.end(), character);
}
}  // namespace

// The rule for what may stand behind "=" and the eight bytes of the length are those of the journal's export format.
TEST(ExportFormat, theJournalGetsPlainTextOrBytesWithTheirLength)
{
    const std::string plain = "A tab\there, caf\u00e9";
    EXPECT_NE(written(makeJournal, messageOf(plain.substr(2))).find("\nMESSAGE=" + plain + "\n"),
              std::string::npos);
    for (std::string const& text : {std::string("two\nlines"), std::string("\x1b[31m"), std::string("\x7f"),
                                    std::string("\xff"), std::string("zero\0", 5), std::string(300, '\n')}) {
        const std::string message = "A " + text;
        std::string expected = "\nMESSAGE\n";
        for (std::size_t size = message.size(), i = 0; i < 8; ++i, size >>= 8)
            expected += static_cast<char>(size & 0xff);
        expected += message + "\n";
        EXPECT_NE(written(makeJournal, messageOf(text)).find(expected), std::string::npos) << text;
    }
}

TEST(ExportFormat, aJournalEntryEndsWithAnEmptyLine)
{
    const std::string entry = written(makeJournal, messageOf("text"));
    EXPECT_TRUE(entry.ends_with("\n\n"));
    EXPECT_EQ(entry.find("\n\n"), entry.size() - 2);
    EXPECT_EQ(written(makeJournal, messageOf("text"), 2), entry + entry);
    EXPECT_TRUE(entry.starts_with("__REALTIME_TIMESTAMP=1000000\n__MONOTONIC_TIMESTAMP=0\n_BOOT_ID="));
}

TEST(ExportFormat, bootsDifferByFileRunAndDate)
{
    const auto bootOf = [](char const* file, int run, std::time_t started) {
        Record record = messageOf("text");
        record.file = file;
        record.run = run;
        vnlog::Run ofRecord;
        ofRecord.started = started;
        std::ostringstream stream;
        makeJournal(stream)->add(record, ofRecord);
        const std::string entry = stream.str();
        return entry.substr(entry.find("_BOOT_ID=") + 9, 32);
    };
    EXPECT_EQ(bootOf("a", 0, 1), bootOf("a", 0, 1));
    EXPECT_NE(bootOf("a", 0, 1), bootOf("b", 0, 1));
    EXPECT_NE(bootOf("a", 0, 1), bootOf("a", 1, 1));
    EXPECT_NE(bootOf("a", 0, 1), bootOf("a", 0, 2));
    EXPECT_EQ(bootOf("a", 0, 1).find_first_not_of("0123456789abcdef"), std::string::npos);
}

TEST(ExportFormat, csvQuotesWhatHasToBe)
{
    const struct
    {
        std::string text, field;
    } table[] = {
        {"plain text", ",A,plain text,"},     {"a,b", ",A,\"a,b\","}, {"say \"x\"", ",A,\"say \"\"x\"\"\","},
        {"two\nlines", ",A,\"two\nlines\","}, {"\r", ",A,\"\r\","},   {"", ",A,,"},
        {"caf\u00e9", ",A,caf\u00e9,"},       {"\xff", ",A,\ufffd,"}};
    for (auto const& row : table)
        EXPECT_NE(written(makeCsvFormat, messageOf(row.text)).find(row.field), std::string::npos) << row.text;
    EXPECT_TRUE(written(makeCsvFormat, messageOf("\xff")).ends_with(",1,QSD/\r\n"));
    EXPECT_TRUE(written(makeCsvFormat, messageOf(std::string("\0", 1))).ends_with(",1,QSAA\r\n"));
}

TEST(ExportFormat, batchesOfOtlpAreBoundedByRecordsAndBytes)
{
    EXPECT_EQ(countOf(written(makeOtlp, messageOf("text"), 512), '\n'), 1);
    EXPECT_EQ(countOf(written(makeOtlp, messageOf("text"), 513), '\n'), 2);
    // Half a megabyte and a byte of text for each record.
    EXPECT_EQ(countOf(written(makeOtlp, messageOf(std::string(512 * 1024, 'x')), 4), '\n'), 2);
    EXPECT_EQ(written(makeOtlp, messageOf("text"), 0), "");
}

TEST(ExportFormat, eachFormTakesAnyBytes)
{
    std::string bytes;
    for (int i = 0; i < 256; ++i)
        bytes += static_cast<char>(i);
    Record record = messageOf(bytes);
    record.group = bytes;
    record.drawing = {TraceStep::Enter, 0, bytes, bytes, bytes, 1, 0, 0};
    for (Make const& make :
         {Make(makeJsonFormat), Make(makeCsvFormat), Make(makeOtlp), Make(makeJournal), Make(makeChrome)})
        for (const TraceStep step : {TraceStep::None, TraceStep::Enter, TraceStep::Text, TraceStep::Leave}) {
            record.drawing.step = step;
            EXPECT_NO_THROW(written(make, record, manyRecords));
        }
}

TEST(ExportFormat, aFilesNameSaysWhoHasLogged)
{
    const struct
    {
        char const *given, *file, *program;
    } table[] = {{"", "cache.log", "cache"},
                 {"", "/var/log/cache.2.log", "cache"},
                 {"", "C:\\logs\\cache.log", "cache"},
                 {"", "-", "unknown"},
                 {"", "logs/", "unknown"},
                 {"", ".hidden", ".hidden"},
                 {"named", "cache.log", "named"}};
    for (auto const& row : table)
        EXPECT_EQ(getProgram({row.given}, row.file), row.program) << row.file;
}

TEST(ExportFormat, recordsThatBorrowATimeAreCounted)
{
    Record record = messageOf("text");
    record.time.reset();
    record.sinceStart.reset();
    for (Make const& make : {Make(makeJournal), Make(makeChrome)}) {
        std::ostringstream stream;
        const auto format = make(stream);
        format->add(record, vnlog::Run());
        format->add(messageOf("text"), vnlog::Run());
        EXPECT_EQ(format->getTimelessCount(), 1u);
        record.kind = Kind::Stopped;
        format->add(record, vnlog::Run());
        EXPECT_EQ(format->getTimelessCount(), 1u);
        record.kind = Kind::Message;
    }
}
