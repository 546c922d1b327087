#pragma once

#include "logline.h"
#include "logsource.h"
#include "tracecalls.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vnlog
{
/// What gets exported as one: a message with all its lines, a banner, a loss, or a line that isn't the logger's.
struct Record
{
    /// What a message of the trace draws; step None for any other.
    struct Drawing
    {
        TraceStep step = TraceStep::None;
        int depth = TraceLine::notDrawn;
        std::string text;     ///< see TraceLine::text
        std::string process;  ///< decimal, or empty
        std::string file;     ///< or empty
        int line = 0;
        std::size_t ended = 0;   ///< see TraceCalls::Change
        std::size_t unseen = 0;  ///< see TraceCalls::Change
    };

    Kind kind = Kind::Plain;  ///< Started for a whole banner; never StartedOn, ClockFrequency or Blank
    std::string_view file;    ///< name of the input
    std::uint64_t line = 0;   ///< of the input, from 1
    std::uint64_t lines = 1;  ///< how many lines it takes
    int run = -1;             ///< of the input, from 0; -1 before the first banner
    bool isWhole = true;      ///< false: the input ends within it, or its line goes on in the next record
    bool isFurther = false;   ///< a further piece of a line that is longer than any message
    bool hasStamp = false;
    std::uint64_t ticks = 0;
    std::uint32_t thread = 0;
    int level = -1;                          ///< a Vn::LgTypes::Level; -1 if there is none
    std::string group;                       ///< empty for what the trace draws, which has none
    std::string text;                        ///< behind the group's word; lines are separated by "\n"
    long lost = 0;                           ///< messages that an Overflow counts
    std::optional<std::int64_t> time;        ///< nanoseconds since 1970, UTC
    std::optional<std::int64_t> sinceStart;  ///< nanoseconds since the start of the run
    std::optional<std::int64_t> nearTime;    ///< `time`, or that of the last record before that has one
    Drawing drawing;

    /// The group's word and the text, as logged.
    std::string getMessage() const { return group.empty() ? text : group + ' ' + text; }
};

/// Makes records of the lines of one input.
///
///     RecordReader reader(source, RecordReader::Lines::Joined);
///     for (Record record; reader.next(record);)
///         format.add(record, source.getRun(record.run));
///
/// A message may hold line ends; only its first line has a stamp. So lines without one that follow a message belong to it,
/// as far as a message can be that long. What another program wrote between two messages can't be told from that; with
/// Lines::Single each line is a record of its own. The lines of a banner are one record in any case.
///
/// Each byte of the input but line ends is in one record, apart from what parseLine() takes a line apart by. Memory: that
/// of a line, and a name for each open call of the latest `keptRuns` runs.
/// Tests: tests/vnlog/exportrecordtest.cpp.
class RecordReader
{
public:
    enum class Lines : bool
    {
        Single,
        Joined
    };

    /// The longest text that the logger's rings take, in bytes.
    static constexpr std::size_t longestMessage = 32767;

    /// Open calls of earlier runs are forgotten.
    static constexpr int keptRuns = 64;

    /// `source` must live longer.
    RecordReader(LogSource& source, Lines lines) : _source(source), _lines(lines) {}

    /// The next record; false at the end. Failures are those of the source.
    bool next(Record& record);

private:
    void begin(Record& record);
    void draw(Record& record);
    bool isContinued(Record const& record) const;
    void append(Record& record);
    void forgetRuns(Record const& record);

    LogSource& _source;
    Lines _lines;
    LogLine _ahead;  ///< the line that follows the record
    bool _hasAhead = false;
    std::optional<std::int64_t> _lastTime;
    std::map<std::pair<int, std::uint32_t>, TraceCalls> _calls;  ///< by run and thread
};

}  // namespace vnlog
