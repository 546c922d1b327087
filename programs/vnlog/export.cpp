// The command "export": from lines to records (exportrecord.cpp), from records to one of five forms (exportformat.h).
//
// Inputs are read one after the other, each in one pass, so standard input works and memory doesn't grow with them. What a form
// can't hold as it is (bytes that aren't UTF-8, records without a time) is told at the end, on standard error.
#include "export.h"

#include "console.h"
#include "exportformat.h"
#include "exportrecord.h"
#include "exporttext.h"
#include "inputfile.h"
#include "logsource.h"
#include "settings.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace vnlog
{
namespace
{
struct Settings
{
    Setting<char const*> output{"export.output", "o:", "-o FILE: write to FILE instead of standard output", nullptr,
                                ""};
    Setting<char const*> program{
        "export.program", "p:", "-p NAME: who has logged, for --otlp and --journal; by default the file's name",
        nullptr, ""};
    Setting<char const*> written{"zone.written", "Z:", "-Z ZONE: time zone of the machine that wrote the logs",
                                 "VNLOG_WRITTEN_ZONE", "local"};
    bool isChrome = false;
    bool isCsv = false;
    bool isJournal = false;
    bool isJson = false;
    bool isOtlp = false;
    bool isSingle = false;
};

Settings& getSettings()
{
    static Settings settings;
    return settings;
}

using MakeFormat = std::function<std::unique_ptr<ExportFormat>(std::ostream&)>;

/// The start of the first run that tells one, of all regular files; what else there is can be read once only. The banner is
/// the first thing in a log, or follows the rest of an earlier run; further down nobody looks.
std::int64_t findStart(std::vector<std::string> const& names, Zone const& zone)
{
    constexpr int mostLines = 1000;
    constexpr std::int64_t nanosecondsPerSecond = 1'000'000'000;
    std::optional<std::int64_t> earliest;
    for (std::string const& name : names) {
        if (!std::filesystem::is_regular_file(name))
            continue;
        LogSource source(name, zone);
        LogLine line;
        for (int i = 0; i < mostLines && source.next(line) && !source.getRun(line.run).started; ++i)
            ;
        if (const auto started = source.getRun(0).started)
            earliest =
                std::min(earliest.value_or(INT64_MAX), static_cast<std::int64_t>(*started) * nanosecondsPerSecond);
    }
    return earliest.value_or(0);
}

/// Exactly one form, by its word.
MakeFormat chooseFormat(std::vector<std::string> const& names, Zone const& zone)
{
    Settings const& settings = getSettings();
    const ExportNames program{settings.program.getValue()};
    const struct
    {
        bool isChosen;
        MakeFormat make;
    } forms[] = {
        {settings.isChrome, [=](std::ostream& stream) { return makeChromeFormat(stream, findStart(names, zone)); }},
        {settings.isCsv, makeCsvFormat},
        {settings.isJournal, [=](std::ostream& stream) { return makeJournalFormat(stream, program); }},
        {settings.isJson, makeJsonFormat},
        {settings.isOtlp, [=](std::ostream& stream) { return makeOtlpFormat(stream, program); }},
    };
    MakeFormat make;
    for (auto const& form : forms)
        if (form.isChosen) {
            if (make)
                throw WrongUse("only one form at a time");
            make = form.make;
        }
    if (!make)
        throw WrongUse("which form? One of --chrome-trace, --csv, --journal, --json and --otlp");
    return make;
}

/// No input is written over, or read while it grows by what is written, whatever name it has.
void refuseInputs(std::vector<std::string> const& names, std::string const& output)
{
    const auto written = output.empty() ? InputFile::findOutput() : InputFile::findIdentity(output);
    if (!written)
        return;
    for (std::string const& name : names)
        if (InputFile::findIdentity(name) == written)
            throw std::runtime_error(name + " is the output as well; write to another file");
}

struct Counts
{
    std::uint64_t records = 0;
    std::uint64_t stamped = 0;
    std::uint64_t inexact = 0;  ///< texts that aren't UTF-8
};

Counts exportInput(std::string const& name, Zone const& zone, ExportFormat& format, std::ostream const& stream)
{
    const RecordReader::Lines lines =
        getSettings().isSingle ? RecordReader::Lines::Single : RecordReader::Lines::Joined;
    LogSource source(name, zone);
    RecordReader reader(source, lines);
    Counts counts;
    for (Record record; stream && reader.next(record);) {
        format.add(record, source.getRun(record.run));
        ++counts.records;
        counts.stamped += record.hasStamp ? 1 : 0;
        counts.inexact += isUtf8(record.group) && isUtf8(record.text) ? 0 : 1;
    }
    return counts;
}

/// What the output isn't, or not exactly, on standard error.
void tellCounts(Counts const& counts, ExportFormat const& format)
{
    Settings const& settings = getSettings();
    if (counts.inexact != 0 && !settings.isJournal)
        warn("texts with bytes that are not UTF-8: " + std::to_string(counts.inexact) +
             "; U+FFFD stands for these, and the exact bytes stand beside, in base64");
    if (format.getTimelessCount() != 0)
        warn("records without a time of their own: " + std::to_string(format.getTimelessCount()) +
             "; each stands at the time of the one before it");
}

int exportAll(std::vector<std::string> const& names, std::ostream& stream, std::string const& shownOutput)
{
    const Zone zone = Zone::parse(getSettings().written.getValue());
    const std::unique_ptr<ExportFormat> format = chooseFormat(names, zone)(stream);
    Counts all;
    int code = success;
    for (std::string const& name : names) {
        const Counts counts = exportInput(name, zone, *format, stream);
        if (getSettings().isChrome && counts.records != 0 && counts.stamped == 0) {
            warn(name + " has no line with a time stamp, so there is nothing to draw; it was logged under "
                        "VN_LOG_DISABLE_TIMESTAMPS, or isn't a log");
            code = failed;
        }
        all.inexact += counts.inexact;
    }
    format->finish();
    stream.flush();
    if (!stream)
        throw std::runtime_error(shownOutput + " can't be written");
    tellCounts(all, *format);
    return code;
}
}  // namespace

Vn::InUsage getExportUsage()
{
    Settings& settings = getSettings();
    return Vn::InUsage("Writes logs in a form that other tools read; all of it, in the order of the lines.")
        .operands("[FILE]...")
        .expect(settings.written.getVariable(), "local, UTC, an offset as +05:30, or a zone that the system knows",
                isZone)
        .word("--chrome-trace", "for Chromium's tracing page and for Perfetto: calls, messages, losses",
              settings.isChrome)
        .word("--csv", "a table with a row of names, as RFC 4180 has it", settings.isCsv)
        .word("--journal", "the journal's export format, for systemd-journal-remote", settings.isJournal)
        .word("--json", "an object for each record, one a line; lnav reads it as well", settings.isJson)
        .word("--otlp", "OpenTelemetry's logs as JSON lines, as its file exporter writes them", settings.isOtlp)
        .word("--single", "each line is a record; else lines without a stamp belong to the message before them",
              settings.isSingle)
        .note("Without FILE, or for -, standard input is read.")
        .note("Exit code: 0 for success, 1 for a failure, 2 for wrong usage.");
}

int runExport(std::vector<std::string> const& operands)
{
    const std::vector<std::string> names = getNames(operands);
    const std::string output = getSettings().output.getValue();
    chooseFormat(names, Zone());
    refuseInputs(names, output);
    if (output.empty()) {
        setBinary();
        return exportAll(names, std::cout, "standard output");
    }
    std::ofstream file(output, std::ios::binary);
    if (!file)
        throw std::runtime_error(output + " can't be written");
    return exportAll(names, file, output);
}

}  // namespace vnlog
