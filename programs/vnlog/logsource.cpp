// Lines of a file, out of one buffer of fixed size.
//
// next() looks for the end of the line in what the buffer holds (fill() moves the rest to the front and reads more), parses
// the line where it stands, and completes what the line alone cannot tell: its number, its run, and whether an empty line
// belongs to a banner. A buffer without a line end is given as a piece.
//
// Lines of several processes are told apart by threads: while a run is open, each thread's run and last ticks are kept. That
// table is cleared when all runs have stopped, and when it grows too large.
#include "logsource.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace vnlog
{
namespace
{
constexpr std::size_t mostThreads = 65536;
constexpr double nanosecondsPerSecond = 1e9;

/// The largest time in nanoseconds that is told, in the year 2223: what is added to it still has room.
constexpr double mostNanoseconds = 8e18;
constexpr std::time_t mostSeconds = 8000000000;

const Run noRun;
}  // namespace

LogSource::LogSource(std::string name, Zone zone)
    : _name(std::move(name)),
      _zone(std::move(zone)),
      _file(std::make_unique<InputFile>(_name)),
      _buffer(std::make_unique<char[]>(longestPiece))
{}

bool LogSource::next(LogLine& line)
{
    for (;;) {
        char const* const begin = _buffer.get() + _begin;
        const std::size_t size = _end - _begin;
        void const* const found =
            size > _searched ? std::memchr(begin + _searched, '\n', size - _searched) : nullptr;
        if (found != nullptr) {
            const std::size_t length = static_cast<std::size_t>(static_cast<char const*>(found) - begin);
            const bool hasReturn = length > 0 && begin[length - 1] == '\r';
            const std::size_t text = hasReturn ? length - 1 : length;
            take(line, text, {begin + text, length + 1 - text});
            return true;
        }
        _searched = size;
        if (size == longestPiece) {
            // A carriage return may be half a line end.
            take(line, begin[size - 1] == '\r' ? size - 1 : size, {});
            return true;
        }
        if (_isRenewed || !fill()) {
            if (size == 0 || (_isFollowing && !_isRenewed)) {
                if (!_isRenewed)
                    return false;
                _isRenewed = _isWithin = false;
                continue;
            }
            take(line, size, {});
            _isRenewed = false;
            _isWithin = false;
            return true;
        }
    }
}

/// Reads more behind what the buffer holds. False at the end.
bool LogSource::fill()
{
    if (_begin != 0) {
        std::memmove(_buffer.get(), _buffer.get() + _begin, _end - _begin);
        _end -= _begin;
        _begin = 0;
    }
    const std::size_t got = _file->read(_buffer.get() + _end, longestPiece - _end);
    _end += got;
    _position += got;
    return got != 0;
}

/// Gives so many bytes, and the line end behind them, as a line or a piece.
void LogSource::take(LogLine& line, std::size_t length, std::string_view end)
{
    const std::string_view raw(_buffer.get() + _begin, length);
    if (!_isWithin) {
        ++_number;
        line = parseLine(raw);
        line.number = _number;
        line.end = end;
        line.isWhole = !end.empty();
        read(line);
        if (end.empty()) {
            _first = line;
            _first.group = _first.text = {};
        }
    } else {
        line = _first;
        line.raw = line.text = raw;
        line.end = end;
        line.isStart = false;
        line.isWhole = !end.empty();
    }
    _isWithin = end.empty();
    _begin += length + end.size();
    _searched = 0;
}

/// What a line means for those behind it.
void LogSource::read(LogLine& line)
{
    const bool isBlankDue = std::exchange(_isBlankDue, line.kind == Kind::StartedOn);
    switch (line.kind) {
    case Kind::Started:
        startRun();
        break;
    case Kind::StartedOn:
        if (_runCount != 0) {
            getLastRun().hasStamps = true;
            getLastRun().started = findStart(line.text);
        }
        break;
    case Kind::ClockFrequency:
        if (_runCount != 0) {
            getLastRun().resolution = parseResolution(line.text).value_or(0);
            getLastRun().nanoseconds =
                std::llround(std::min(getLastRun().resolution * nanosecondsPerSecond, mostNanoseconds));
        }
        break;
    case Kind::Stopped:
        if (_runCount != 0)
            getLastRun().isStopped = true;
        _openRuns = std::max(0, _openRuns - 1);
        if (_openRuns == 0)
            forgetThreads();
        break;
    case Kind::Plain:
        if (isBlankDue && line.raw.empty() && line.isWhole)
            line.kind = Kind::Blank;
        break;
    case Kind::Message:
    case Kind::Overflow:
    case Kind::Blank:
        break;
    }
    line.run = line.hasStamp ? findRun(line) : _runCount - 1;
}

/// Nothing for a date before 1970 or beyond what times have room for, either.
std::optional<std::time_t> LogSource::findStart(std::string_view text) const
{
    const std::optional<Civil> date = parseDate(text);
    const std::optional<std::time_t> time = date ? _zone.find(*date) : std::nullopt;
    return time && *time >= 0 && *time <= mostSeconds ? time : std::nullopt;
}

void LogSource::startRun()
{
    if (_runs.size() < keptRuns)
        _runs.emplace_back();
    ++_runCount;
    getLastRun() = Run();
    ++_openRuns;
}

void LogSource::forgetThreads()
{
    _threads.clear();
    _lastThread = nullptr;
}

Run& LogSource::getLastRun()
{
    return _runs[static_cast<std::size_t>((_runCount - 1) % keptRuns)];
}

/// The run of a line with a stamp.
int LogSource::findRun(LogLine const& line)
{
    const int last = _runCount - 1;
    if (_openRuns == 0)
        return last;
    if (_threads.size() >= mostThreads)
        forgetThreads();
    // Most lines come from the thread of the line before.
    if (_lastThread == nullptr || _lastThread->first != line.thread)
        _lastThread = &*_threads.try_emplace(line.thread, ThreadState{last, line.ticks}).first;
    ThreadState& thread = _lastThread->second;
    if (thread.run != last) {
        Run const& before = getRun(thread.run);
        Run const& after = getRun(last);
        // Banners have whole seconds, so the earlier process may seem up to a second younger than it is.
        const double passed =
            before.started && after.started ? static_cast<double>(*after.started - *before.started) - 1.0 : 0.0;
        const bool continues =
            line.ticks >= thread.ticks && static_cast<double>(line.ticks) * before.resolution >= passed;
        if (!continues)
            thread.run = last;
    }
    thread.ticks = line.ticks;
    return thread.run;
}

bool LogSource::renew()
{
    if (_name == "-")
        return false;
    const std::optional<FileIdentity> identity = InputFile::findIdentity(_name);
    const bool isOther = identity && *identity != _file->getIdentity();
    if (isOther) {
        // What the old file got in the meantime comes first.
        if (_end - _begin < longestPiece && fill())
            return true;
        try {
            _file = std::make_unique<InputFile>(_name);
        } catch (std::runtime_error const&) {
            // It has gone again, and the next one to come is a change as well.
            if (!InputFile::findIdentity(_name))
                return false;
            throw;
        }
    } else if (_file->getSize().value_or(_position) < _position)
        _file->rewind();
    else
        return false;
    _position = 0;
    _isRenewed = true;
    return true;
}

Run const& LogSource::getRun(int run) const
{
    const bool isKnown = run >= 0 && run < _runCount && run >= _runCount - keptRuns;
    return isKnown ? _runs[static_cast<std::size_t>(run % keptRuns)] : noRun;
}

std::optional<std::int64_t> LogSource::getSinceStart(LogLine const& line) const
{
    Run const& run = getRun(line.run);
    if (!line.hasStamp || run.nanoseconds <= 0)
        return std::nullopt;
    if (static_cast<double>(line.ticks) * static_cast<double>(run.nanoseconds) > mostNanoseconds)
        return std::nullopt;
    return static_cast<std::int64_t>(line.ticks) * run.nanoseconds;
}

std::optional<std::int64_t> LogSource::getTime(LogLine const& line) const
{
    const std::optional<std::int64_t> since = getSinceStart(line);
    Run const& run = getRun(line.run);
    if (!since || !run.started)
        return std::nullopt;
    const double time = static_cast<double>(*run.started) * nanosecondsPerSecond + static_cast<double>(*since);
    if (time > mostNanoseconds)
        return std::nullopt;
    return static_cast<std::int64_t>(*run.started) * 1000000000 + *since;
}

void refuseOwnOutput(LogSource const& source)
{
    if (InputFile::findOutput() == source.getIdentity())
        throw std::runtime_error("'" + source.getName() + "' is the output as well");
}

}  // namespace vnlog
