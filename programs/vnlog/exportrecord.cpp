#include "exportrecord.h"

#include <base/lgtypes.h>

namespace vnlog
{
namespace
{
constexpr std::int64_t nanosecondsPerSecond = 1'000'000'000;

/// The text of the message as logged, drawings included: `group` and `text` lie side by side in the line.
std::string_view getWholeMessage(LogLine const& line)
{
    if (line.group.empty())
        return line.text;
    return line.raw.substr(static_cast<std::size_t>(line.group.data() - line.raw.data()));
}

bool isBannerLine(Kind kind)
{
    return kind == Kind::StartedOn || kind == Kind::Blank || kind == Kind::ClockFrequency;
}

/// A text may have further lines, a drawn step hasn't.
bool isStep(Record const& record)
{
    return record.drawing.step == TraceStep::Enter || record.drawing.step == TraceStep::Leave;
}
}  // namespace

bool RecordReader::next(Record& record)
{
    if (!_hasAhead && !_source.next(_ahead))
        return false;
    begin(record);
    while ((_hasAhead = _source.next(_ahead)) && isContinued(record))
        append(record);
    // The date stands in the banner's second line.
    if (record.kind == Kind::Started)
        if (const auto started = _source.getRun(record.run).started)
            record.time = static_cast<std::int64_t>(*started) * nanosecondsPerSecond;
    record.nearTime = _lastTime = record.time ? record.time : _lastTime;
    return true;
}

void RecordReader::begin(Record& record)
{
    record = Record();
    record.kind = isBannerLine(_ahead.kind) ? Kind::Plain : _ahead.kind;
    record.file = _source.getName();
    record.line = _ahead.number;
    record.run = _ahead.run;
    record.isWhole = _ahead.isWhole;
    record.isFurther = !_ahead.isStart;
    record.hasStamp = _ahead.hasStamp;
    record.ticks = _ahead.ticks;
    record.thread = _ahead.thread;
    record.level = _ahead.level;
    record.lost = record.isFurther ? 0 : _ahead.lost;
    if (_ahead.isStart && _ahead.kind == Kind::Message) {
        record.group = _ahead.group;
        record.text = _ahead.text;
    } else
        record.text = _ahead.raw;
    if (_ahead.kind == Kind::Overflow && _ahead.isStart)
        record.text = _ahead.text;
    record.time = _source.getTime(_ahead);
    record.sinceStart = _source.getSinceStart(_ahead);
    draw(record);
    forgetRuns(record);
}

/// Keeps the thread's open calls, and puts down what the line changes.
void RecordReader::draw(Record& record)
{
    const bool isTracing = record.kind == Kind::Message && record.level == Vn::LgTypes::Tracing;
    if (record.isFurther || !record.hasStamp)
        return;
    const std::string_view message = getWholeMessage(_ahead);
    // "#" is what a full queue leaves of a text.
    if (record.kind == Kind::Overflow || (isTracing && message == "#")) {
        const auto calls = _calls.find({record.run, record.thread});
        if (calls != _calls.end())
            calls->second.setUnsure();
        return;
    }
    if (!isTracing)
        return;
    const auto [calls, isNew] = _calls.try_emplace({record.run, record.thread});
    const TraceCalls::Change change = calls->second.take(message);
    if (calls->second.getOpen().empty())
        _calls.erase(calls);
    if (change.line.step == TraceStep::None)
        return;
    record.group.clear();
    record.text = message;
    record.drawing = {change.line.step,
                      change.line.depth,
                      std::string(change.line.text),
                      std::string(change.line.process),
                      std::string(change.line.file),
                      change.line.line,
                      change.ended,
                      change.unseen};
}

bool RecordReader::isContinued(Record const& record) const
{
    if (record.kind == Kind::Started)
        return isBannerLine(_ahead.kind) && _ahead.run == record.run;
    return _lines == Lines::Joined && record.kind == Kind::Message && record.isWhole && !record.isFurther &&
           !isStep(record) && _ahead.kind == Kind::Plain && _ahead.isStart &&
           record.group.size() + 1 + record.text.size() + 1 + _ahead.raw.size() <= longestMessage;
}

void RecordReader::append(Record& record)
{
    record.text += '\n';
    record.text += _ahead.raw;
    if (record.drawing.step == TraceStep::Text)
        (record.drawing.text += '\n') += _ahead.raw;
    ++record.lines;
    record.isWhole = _ahead.isWhole;
}

/// A stop banner doesn't tell whose it is where several processes write one file, so it ends no call.
void RecordReader::forgetRuns(Record const& record)
{
    if (record.kind == Kind::Started)
        std::erase_if(_calls, [&](auto const& calls) { return calls.first.first < record.run - keptRuns; });
}

}  // namespace vnlog
