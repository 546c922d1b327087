#pragma once

#include "inputfile.h"
#include "logline.h"
#include "zone.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace vnlog
{

/// Reads the lines of a log from a file or, for "-", from standard input.
///
///     LogSource source("events.log");
///     LogLine line;
///     while (source.next(line))
///         std::cout << line.raw << line.end;      // the file, byte by byte
///
/// Each byte of the input is in `raw` or `end` of exactly one line. Memory is the same for any input: a line that is longer than
/// `longestPiece` comes in pieces, which share the kind, the stamp and the number of the first; no message of the logger is that
/// long.
///
/// Where several processes write one file, a line belongs to the last start banner before it, unless its thread was seen in an
/// earlier process that has not stopped and the line's ticks continue that thread's and fit the time that had passed there when
/// the later process started.
///
/// Failures of the system throw std::runtime_error with the name and the reason. One thread.
/// Tests: tests/vnlog/logsourcetest.cpp.
class LogSource
{
public:
    static constexpr std::size_t longestPiece = 256 * 1024;
    static constexpr int keptRuns = 4096;  ///< getRun() knows this many last ones

    /// Opens the file. `zone` is that of the machine that wrote the log: a banner has a date without a zone.
    explicit LogSource(std::string name, Zone zone = Zone::getLocal());

    LogSource(LogSource const&) = delete;
    LogSource& operator=(LogSource const&) = delete;

    /// The next line; false at the end. The line holds until the next call.
    bool next(LogLine& line);

    /// From now on the end of the input is the end of what has been written so far: next() keeps a half line back, returns false,
    /// and goes on when it is called again and there is more.
    void follow() { _isFollowing = true; }

    /// Goes on with another file, or from the start, once next() has returned false while following. True if there may be more.
    ///
    ///     the file is shorter than what was read       ->  from its start
    ///     another file has the name, and it is opened  ->  from that one's start
    ///     both as before, or no file has the name      ->  false
    ///
    /// The half line that was kept back comes first, as it is. A file that was begun anew and has grown beyond what had been read
    /// looks like one that has only grown, and is taken for that.
    bool renew();

    /// The run of a line; an empty one for -1, and for runs before the last `keptRuns`.
    Run const& getRun(int run) const;

    /// How many start banners have come so far.
    int getRunCount() const { return _runCount; }

    /// How many have not been stopped.
    int getOpenRunCount() const { return _openRuns; }

    std::string const& getName() const { return _name; }
    FileIdentity getIdentity() const { return _file->getIdentity(); }

    /// Nanoseconds since 1970 in UTC: the banner's date and the ticks. The date has whole seconds, so this is up to a second early; it
    /// is of the moment when the file was opened, shortly after ticks began to count. Nothing without a stamp, a date or a resolution.
    std::optional<std::int64_t> getTime(LogLine const& line) const;

    /// Nanoseconds since the start of the run; nothing without a stamp or a resolution.
    std::optional<std::int64_t> getSinceStart(LogLine const& line) const;

private:
    struct ThreadState
    {
        int run;
        std::uint64_t ticks;
    };

    bool fill();
    void take(LogLine& line, std::size_t length, std::string_view end);
    void read(LogLine& line);
    std::optional<std::time_t> findStart(std::string_view text) const;
    void startRun();
    void forgetThreads();
    int findRun(LogLine const& line);
    Run& getLastRun();

    std::string _name;
    Zone _zone;
    std::unique_ptr<InputFile> _file;
    std::unique_ptr<char[]> _buffer;
    std::size_t _begin = 0;  ///< of what has not been taken, in the buffer
    std::size_t _end = 0;
    std::size_t _searched = 0;    ///< from `_begin`, where no line end is
    std::uint64_t _position = 0;  ///< bytes read of the file
    LogLine _first;               ///< of a line in pieces: the first one
    bool _isWithin = false;       ///< whether the last piece has no end yet
    bool _isFollowing = false;
    bool _isRenewed = false;   ///< the buffer holds the rest of an earlier file
    bool _isBlankDue = false;  ///< a StartedOn line was the last one
    std::uint64_t _number = 0;
    std::vector<Run> _runs;  ///< a ring of the last ones
    int _runCount = 0;
    int _openRuns = 0;                                        ///< started and not stopped
    std::unordered_map<std::uint32_t, ThreadState> _threads;  ///< the run of each, while `_openRuns` is above 0
    std::pair<std::uint32_t const, ThreadState>* _lastThread = nullptr;  ///< in that table: of the last line
};

/// Throws std::runtime_error if the source is the file that standard output writes, whatever its name: it would be read for ever.
void refuseOwnOutput(LogSource const& source);

}  // namespace vnlog
