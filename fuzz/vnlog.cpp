// Logs of any bytes, through all of vnlog that reads and exports: each byte of the input is in one line and in one record, the
// calls stay in step, and what each form gives can be read back by its own rules.
#include <exportformat.h>
#include <exportrecord.h>
#include <exporttext.h>
#include <logsource.h>
#include <timehistogram.h>
#include <timetext.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace
{
using namespace vnlog;
using nlohmann::json;

void check(bool condition)
{
    if (!condition)
        std::abort();
}

/// A file without a name, which the reading side opens as any other.
class MemoryFile
{
public:
    MemoryFile() : _descriptor(::memfd_create("log", MFD_CLOEXEC))
    {
        check(_descriptor >= 0);
        _name = "/proc/self/fd/" + std::to_string(_descriptor);
    }

    void set(std::string_view bytes) const
    {
        check(::ftruncate(_descriptor, 0) == 0);
        check(::pwrite(_descriptor, bytes.data(), bytes.size(), 0) == static_cast<::ssize_t>(bytes.size()));
    }

    std::string const& getName() const { return _name; }

private:
    int _descriptor;
    std::string _name;
};

std::vector<json> parseLines(std::string const& text)
{
    std::vector<json> rows;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        rows.push_back(json::parse(line));
    return rows;
}

/// The journal's export format by its rules; gives the entries' messages.
std::vector<std::string> parseJournal(std::string_view text)
{
    std::vector<std::string> messages;
    while (!text.empty()) {
        for (; !text.starts_with('\n'); text.remove_prefix(1)) {
            const std::size_t end = text.find_first_of("=\n");
            check(end != std::string_view::npos && end > 0);
            const std::string_view name = text.substr(0, end);
            check(name.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_") == std::string_view::npos);
            std::size_t size = 0;
            const bool isPlain = text[end] == '=';
            text.remove_prefix(end + 1);
            if (isPlain)
                size = text.find('\n');
            else {
                for (std::size_t i = 8; i-- != 0;)
                    size = size << 8 | static_cast<unsigned char>(text[i]);
                text.remove_prefix(8);
            }
            check(size < text.size() && text[size] == '\n');
            if (name == "MESSAGE")
                messages.emplace_back(text.substr(0, size));
            text.remove_prefix(size);
        }
        text.remove_prefix(1);
    }
    return messages;
}

/// Rows and fields of RFC 4180.
std::vector<std::vector<std::string>> parseCsv(std::string_view text)
{
    std::vector<std::vector<std::string>> rows(1, std::vector<std::string>(1));
    while (!text.empty()) {
        std::string& field = rows.back().back();
        if (text.starts_with('"')) {
            for (text.remove_prefix(1); !text.starts_with('"') || text.starts_with("\"\"");) {
                field += text.front();
                text.remove_prefix(text.front() == '"' ? 2 : 1);
            }
            text.remove_prefix(1);
        } else {
            field = text.substr(0, text.find_first_of(",\r\n\""));
            text.remove_prefix(field.size());
        }
        if (text.starts_with(','))
            rows.back().emplace_back();
        else {
            check(text.starts_with("\r\n"));
            rows.emplace_back(1);
            text.remove_prefix(1);
        }
        text.remove_prefix(1);
    }
    rows.pop_back();
    return rows;
}

/// What the five forms have written.
struct Exports
{
    std::ostringstream chrome, csv, journal, jsonLines, otlp;
    std::unique_ptr<ExportFormat> formats[5] = {makeChromeFormat(chrome, 0), makeCsvFormat(csv),
                                                makeJournalFormat(journal, {}), makeJsonFormat(jsonLines),
                                                makeOtlpFormat(otlp, {})};
};

void checkChrome(std::string const& text)
{
    std::map<std::uint64_t, long> open;
    const json trace = json::parse(text);
    for (json const& event : trace["traceEvents"]) {
        long& calls = open[event["tid"].get<std::uint64_t>()];
        calls += event["ph"] == "B" ? 1 : event["ph"] == "E" ? -1 : 0;
        check(calls >= 0);
    }
    check(std::all_of(open.begin(), open.end(), [](auto const& thread) { return thread.second == 0; }));
}

/// As the log had it, but for line ends.
std::string rebuild(Record const& record)
{
    if (!record.hasStamp || record.isFurther)
        return record.getMessage();
    char stamp[64];
    std::snprintf(stamp, sizeof stamp, "%010llu %010llu (0x%08x) ",
                  static_cast<unsigned long long>(record.ticks >> 32),
                  static_cast<unsigned long long>(record.ticks & 0xffffffff), record.thread);
    return stamp + std::string(getLevelWord(record.level)) + ": " + record.getMessage();
}

void checkRecords(MemoryFile const& file, RecordReader::Lines lines, std::string const& withoutEnds)
{
    LogSource source(file.getName(), Zone());
    RecordReader reader(source, lines);
    Exports exports;
    std::string rebuilt;
    std::vector<std::string> messages;
    for (Record record; reader.next(record);) {
        for (auto const& format : exports.formats)
            format->add(record, source.getRun(record.run));
        messages.push_back(record.getMessage());
        rebuilt += rebuild(record) + (record.isWhole ? "\n" : "");
    }
    for (auto const& format : exports.formats)
        format->finish();
    check(rebuilt == withoutEnds);

    const std::vector<json> rows = parseLines(exports.jsonLines.str());
    check(rows.size() == messages.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const std::string group =
            rows[i].contains("group_name") ? rows[i]["group_name"].get<std::string>() + " " : "";
        const bool isExact = isUtf8(messages[i]);
        check(isExact == !rows[i].contains("bytes"));
        check(isExact ? group + rows[i]["text"].get<std::string>() == messages[i]
                      : rows[i]["bytes"] == toBase64(messages[i]));
    }
    check(parseJournal(exports.journal.str()) == messages);
    const auto table = parseCsv(exports.csv.str());
    check(table.size() == messages.size() + 1);
    check(std::all_of(table.begin(), table.end(), [&](auto const& row) { return row.size() == table[0].size(); }));
    std::size_t logged = 0;
    for (json const& batch : parseLines(exports.otlp.str()))
        logged += batch["resourceLogs"][0]["scopeLogs"][0]["logRecords"].size();
    check(logged == messages.size());
    checkChrome(exports.chrome.str());
}

void checkCalls(TraceCalls& calls, std::string_view message)
{
    const std::size_t before = calls.getOpen().size();
    const TraceCalls::Change change = calls.take(message);
    const std::size_t entered = change.line.step == TraceStep::Enter ? 1 : 0;
    const std::size_t left = change.line.step == TraceStep::Leave ? 1 : 0;
    check(change.ended <= before);
    check(before - change.ended + change.unseen + entered - left == calls.getOpen().size());
    for (const std::string_view view : {change.line.text, change.line.process, change.line.file})
        check(view.empty() ||
              (view.data() >= message.data() && view.data() + view.size() <= message.data() + message.size()));
}

/// All lines, and what their ends are in a log with "\n" alone.
std::string checkLines(MemoryFile const& file, std::string_view bytes)
{
    LogSource source(file.getName(), Zone());
    TraceCalls calls;
    TimeHistogram histogram(8);
    TimeText text(Zone(), 9);
    std::string all, withoutEnds, shown;
    LogLine line;
    for (std::uint64_t number = 0; source.next(line);) {
        number += line.isStart ? 1 : 0;
        check(line.number == number);
        all += line.raw;
        all += line.end;
        withoutEnds += line.raw;
        withoutEnds += line.end.empty() ? "" : "\n";
        checkCalls(calls, line.text);
        if (const auto time = source.getTime(line)) {
            histogram.add(*time);
            text.putDate(shown, *time);
        }
    }
    check(all == bytes);
    for (const bool isAscii : {false, true})
        check(drawColumns(histogram.getCounts(), 3, isAscii).size() == 3);
    return withoutEnds;
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    static const MemoryFile file;
    const std::string_view bytes(reinterpret_cast<char const*>(data), size);
    file.set(bytes);
    const std::string withoutEnds = checkLines(file, bytes);
    for (const auto lines : {RecordReader::Lines::Single, RecordReader::Lines::Joined})
        checkRecords(file, lines, withoutEnds);
    return 0;
}
