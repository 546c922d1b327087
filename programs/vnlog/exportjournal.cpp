// The journal's export format: an entry is a field a line, "NAME=value", and ends with an empty line. A value that isn't
// plain text stands behind "NAME\n" and its length in eight bytes, lowest first.
//
// The journal wants a time for every entry, and takes a monotonic clock to belong to a boot. The logger's clock begins with
// each run, so each run has a boot id of its own, made from the file's name, the number of the run and its date: the same log
// gives the same ids.
//
// Priorities are those of syslog, from 1 (alert) to 7 (debug). 0 would be shown to everybody who is logged in.
#include "exportformat.h"
#include "exporttext.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <ostream>

namespace vnlog
{
namespace
{
constexpr std::array<char const*, 7> priorities = {"1", "2", "3", "4", "6", "7", "7"};
constexpr std::int64_t nanosecondsPerMicrosecond = 1000;

/// What may stand behind "=": UTF-8 without control characters other than the tab.
bool isPlainValue(std::string_view value)
{
    return isUtf8(value) && std::ranges::none_of(value, [](char character) {
               const auto byte = static_cast<unsigned char>(character);
               return (byte < 0x20 && byte != '\t') || byte == 0x7F;
           });
}

/// FNV-1a, over the number's bytes and the text.
std::uint64_t hash(std::uint64_t basis, std::string_view text, std::uint64_t number)
{
    constexpr std::uint64_t prime = 0x100000001B3;
    for (const char character : text)
        basis = (basis ^ static_cast<unsigned char>(character)) * prime;
    for (int i = 0; i < 8; ++i)
        basis = (basis ^ (number >> 8 * i & 0xFF)) * prime;
    return basis;
}

class JournalFormat : public ExportFormat
{
public:
    JournalFormat(std::ostream& stream, ExportNames names) : _stream(stream), _names(std::move(names)) {}

    void add(Record const& record, Run const& run) override
    {
        if (record.run != _run || record.file != _file)
            startRun(record, run);
        writeTime(record);
        write("MESSAGE", record.getMessage());
        write("SYSLOG_IDENTIFIER", _program);
        write("VN_KIND", getKindWord(record.kind));
        if (record.level >= 0) {
            write("PRIORITY", priorities[static_cast<std::size_t>(record.level)]);
            write("VN_LEVEL", getLevelWord(record.level));
        }
        if (record.hasStamp) {
            write("TID", std::to_string(record.thread));
            write("VN_TICKS", std::to_string(record.ticks));
        }
        if (!record.group.empty())
            write("VN_GROUP", record.group);
        if (record.kind == Kind::Overflow)
            write("VN_LOST", std::to_string(record.lost));
        writeDrawing(record.drawing);
        write("VN_FILE", record.file);
        write("VN_LINE", std::to_string(record.line));
        if (!record.isWhole)
            write("VN_WHOLE", "no");
        _stream << '\n';
    }

private:
    void startRun(Record const& record, Run const& run)
    {
        constexpr std::uint64_t first = 0xCBF29CE484222325, second = 0x6C62272E07BB0142;
        _run = record.run;
        _file = record.file;
        _program = getProgram(_names, record.file);
        _sinceStart = 0;
        const std::uint64_t number = static_cast<std::uint64_t>(static_cast<std::int64_t>(record.run));
        const auto started = static_cast<std::uint64_t>(run.started.value_or(0));
        char text[40];
        std::snprintf(text, sizeof text, "%016llx%016llx",
                      static_cast<unsigned long long>(hash(hash(first, record.file, number), {}, started)),
                      static_cast<unsigned long long>(hash(hash(second, record.file, number), {}, started)));
        _boot = text;
    }

    /// Ahead of all other fields. The journal refuses times up to 1970, and holds a file for damaged in which a boot's monotonic clock
    /// goes back, as from one thread's line to another's it may: the exact time is in VN_TICKS.
    void writeTime(Record const& record)
    {
        if (!record.time)
            countTimeless(record);
        _sinceStart = std::max(_sinceStart, record.sinceStart.value_or(_sinceStart));
        const std::int64_t time =
            std::max<std::int64_t>(record.nearTime.value_or(0) / nanosecondsPerMicrosecond, 1);
        write("__REALTIME_TIMESTAMP", std::to_string(time));
        write("__MONOTONIC_TIMESTAMP", std::to_string(_sinceStart / nanosecondsPerMicrosecond));
        write("_BOOT_ID", _boot);
        if (!record.time)
            write("VN_TIME", "unknown");
    }

    void writeDrawing(Record::Drawing const& drawing)
    {
        if (drawing.step == TraceStep::Enter)
            write("CODE_FUNC", drawing.text);
        if (!drawing.file.empty())
            write("CODE_FILE", drawing.file);
        if (drawing.line != 0)
            write("CODE_LINE", std::to_string(drawing.line));
        if (!drawing.process.empty())
            write("SYSLOG_PID", drawing.process);
    }

    void write(char const* name, std::string_view value)
    {
        _stream << name;
        if (isPlainValue(value)) {
            _stream << '=' << value << '\n';
            return;
        }
        _stream << '\n';
        for (int i = 0; i < 8; ++i)
            _stream.put(static_cast<char>(static_cast<std::uint64_t>(value.size()) >> 8 * i & 0xFF));
        _stream << value << '\n';
    }

    std::ostream& _stream;
    ExportNames _names;
    std::string _program;
    std::string _boot;
    std::string _file;
    int _run = -2;                 ///< no record's
    std::int64_t _sinceStart = 0;  ///< the latest of the run's entries before, in nanoseconds
};
}  // namespace

std::unique_ptr<ExportFormat> makeJournalFormat(std::ostream& stream, ExportNames names)
{
    return std::make_unique<JournalFormat>(stream, std::move(names));
}

}  // namespace vnlog
