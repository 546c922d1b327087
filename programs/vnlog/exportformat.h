#pragma once

#include "exportrecord.h"

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>

namespace vnlog
{
/// A form in which records leave the program. Nothing of a record but what a form's own comment says is left out. Memory:
/// that of a record, if nothing else is said.
///
///     const auto format = makeJsonFormat(std::cout);
///     format->add(record, run);
///     format->finish();
///
/// In forms that are UTF-8, U+FFFD stands for what isn't, and the exact bytes stand beside it, in base64. One thread. Whether
/// the stream has failed is for the caller to look at.
/// Tests: tests/vnlog/exportformattest.cpp, tests/vnlog/exports.py.
class ExportFormat
{
public:
    virtual ~ExportFormat() = default;

    /// `run` is that of the record.
    virtual void add(Record const& record, Run const& run) = 0;

    /// Writes what belongs behind the last record. Once.
    virtual void finish() {}

    /// Records that bear the time of another one, as the form needs a time and theirs isn't known.
    std::uint64_t getTimelessCount() const { return _timeless; }

protected:
    /// Stop banners never have a time, and come right behind the last record.
    void countTimeless(Record const& record) { _timeless += record.kind == Kind::Stopped ? 0 : 1; }

private:
    std::uint64_t _timeless = 0;
};

/// What the records share that the log itself doesn't tell.
struct ExportNames
{
    std::string program;  ///< who logged; empty: the file's name without folder and suffix
};

/// JSON, an object for each record and line. Fields that a record doesn't have are left out. A record without a time has that
/// of the record before, or null, and "time_known" is false.
std::unique_ptr<ExportFormat> makeJsonFormat(std::ostream& stream);

/// CSV as RFC 4180 has it, with a row of names. Zero bytes are replaced as well, as most readers end there.
std::unique_ptr<ExportFormat> makeCsvFormat(std::ostream& stream);

/// OpenTelemetry's logs as JSON, as its file exporter writes them: each line holds a batch. An unknown time is 0, as the
/// encoding has it. Memory: a batch, about a megabyte of texts.
std::unique_ptr<ExportFormat> makeOtlpFormat(std::ostream& stream, ExportNames names);

/// The journal's export format. Each run has a boot id of its own, as its monotonic clock begins anew. Entries without a time
/// have that of the entry before, and the field VN_TIME=unknown.
std::unique_ptr<ExportFormat> makeJournalFormat(std::ostream& stream, ExportNames names);

/// The trace event format, an object with the events' array. Calls of the trace are durations, everything else is an
/// instant; losses are counted as well. Times count from `start`, nanoseconds since 1970, in microseconds. Records without a
/// time stand at that of the record before. Memory: a number for each thread with open calls, and for each run.
std::unique_ptr<ExportFormat> makeChromeFormat(std::ostream& stream, std::int64_t start);

/// @{
/// Shared by the forms.
char const* getKindWord(Kind kind);                                           ///< "message", "lost", "started", ...
std::string getProgram(ExportNames const& names, std::string_view fileName);  ///< "logs/cache.log" -> "cache"
/// @}

}  // namespace vnlog
