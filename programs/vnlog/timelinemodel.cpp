// How a log becomes small: texts repeat, but for numbers in them. A text is split into its form, all that stands around runs of
// digits, and its numbers. Forms are kept once. Each column of the result holds one thing, so that neighbours resemble each
// other: times as differences, numbers of one place of one form together, as differences where these are smaller. Numbers are
// written seven bits a byte, the lowest first; a set eighth bit says that more follow. The compression behind this does the rest.
//
// A run of digits that begins with 0 keeps its length: it is stored as the number that has a 1 ahead of the digits, and the lowest
// bit of the stored value tells such numbers from plain ones. A run longer than 14 digits stays text: scripts compute in doubles.
#include "timelinemodel.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <numeric>
#include <utility>

namespace vnlog
{
namespace
{
constexpr std::int64_t perSecond = 1'000'000'000;
constexpr std::int64_t perOrdinal = 1'000;       ///< nanoseconds that a line takes in sources without stamps
constexpr std::int64_t longestTime = 1LL << 60;  ///< 36 years; what a broken stamp may claim at most
constexpr std::size_t longestNumber = 14;
constexpr int tracingLevel = 5;

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

std::uint64_t storedNumber(std::string_view digits)
{
    const bool keepsLength = digits.front() == '0' && digits.size() > 1;
    std::uint64_t value = keepsLength ? 1 : 0;
    for (const char digit : digits)
        value = value * 10 + static_cast<std::uint64_t>(digit - '0');
    return value << 1 | (keepsLength ? 1 : 0);
}

std::string shownNumber(std::uint64_t stored)
{
    const std::string digits = std::to_string(stored >> 1);
    return (stored & 1) != 0 ? digits.substr(1) : digits;
}

void putNumber(std::string& column, std::uint64_t value)
{
    for (; value >= 0x80; value >>= 7)
        column += static_cast<char>(value | 0x80);
    column += static_cast<char>(value);
}

/// Numbers near zero, of either sign, become small ones.
std::uint64_t folded(std::uint64_t now, std::uint64_t before)
{
    const std::uint64_t difference = now - before;
    return (difference << 1) ^ (difference >> 63 != 0 ? ~std::uint64_t(0) : 0);
}

std::string asJson(std::string_view text)
{
    std::string json = "\"";
    for (const char c : text) {
        char escaped[8];
        if (static_cast<unsigned char>(c) < 0x20 || c == '"' || c == '\\') {
            std::snprintf(escaped, sizeof escaped, "\\u%04x", static_cast<unsigned>(c));
            json += escaped;
        } else {
            json += c;
        }
    }
    return json + '"';
}

/// "null" for what JSON has no number for.
std::string asJson(double value)
{
    if (!std::isfinite(value))
        return "null";
    char text[32];
    std::snprintf(text, sizeof text, "%.9g", value);
    std::replace(text, text + sizeof text, ',', '.');  // some locale's decimal mark
    return text;
}

/// What stands behind the level of a stamped line, group and all.
std::string_view messageOf(LogLine const& line)
{
    if (!line.hasStamp)
        return line.raw;
    const std::size_t colon = line.raw.find(": ");
    return colon == line.raw.npos ? line.text : line.raw.substr(colon + 2);
}
}  // namespace

struct TimelineModel::Source
{
    std::string name;
    std::uint64_t rows = 0;
    std::int64_t time = 0;  ///< of the last stamped line, within its run
    bool hasStamps = false;
    std::optional<Row> pending;  ///< a line of which more pieces may come
    std::string text;            ///< its text
    std::uint64_t missing = 0;   ///< bytes behind the longest text
    std::uint32_t traceLane = 0;
    ProfileReader report;
    std::uint64_t reportRow = 0;
    std::uint32_t reportLane = 0;
};

struct TimelineModel::RunStart
{
    std::optional<std::time_t> started;
    bool isStopped = false, hasResolution = false, sharesDepth = false;
    std::int64_t start = 0;  ///< nanoseconds since the start of the timeline, behind setStarts()
};

struct TimelineModel::Form
{
    std::vector<std::string> pieces;  ///< around the numbers
};

TimelineModel::TimelineModel(Zone zone) : _zone(std::move(zone)) {}
TimelineModel::~TimelineModel() = default;

int TimelineModel::addSource(std::string name)
{
    _sources.push_back(std::make_unique<Source>());
    _sources.back()->name = std::move(name);
    return static_cast<int>(_sources.size()) - 1;
}

std::uint32_t TimelineModel::findLane(int source, int run, std::optional<std::uint32_t> thread)
{
    const auto [found, isNew] = _laneIndex.try_emplace({source, run, thread.has_value(), thread.value_or(0)},
                                                       static_cast<std::uint32_t>(_lanes.size()));
    if (isNew) {
        _lanes.push_back({source, run, thread.has_value(), thread.value_or(0), 0, 0});
        _finders.emplace_back();
    }
    return found->second;
}

TimelineModel::RunStart& TimelineModel::findRun(int source, int index, Run const* run)
{
    RunStart& start = _runs[{source, index}];
    if (run != nullptr && (run->started || run->resolution > 0)) {
        start.started = run->started;
        start.isStopped = run->isStopped;
        start.hasResolution = run->resolution > 0;
    }
    return start;
}

/// Splits a text into its form and its numbers.
void TimelineModel::setText(Row& row, std::string_view text)
{
    row.numbers = _numbers.size();
    std::string key;
    std::vector<std::string> pieces(1);
    for (std::size_t at = 0; at < text.size();) {
        std::size_t end = at;
        while (end < text.size() && isDigit(text[end]) == isDigit(text[at]))
            ++end;
        const std::string_view part = text.substr(at, end - at);
        if (isDigit(text[at]) && part.size() <= longestNumber) {
            _numbers.push_back(storedNumber(part));
            pieces.emplace_back();
        } else {
            pieces.back() += part;
        }
        at = end;
    }
    // Lengths ahead of the pieces, as any byte may be part of a text.
    for (std::string const& piece : pieces) {
        putNumber(key, piece.size());
        key += piece;
    }
    const auto [found, isNew] = _formIndex.try_emplace(std::move(key), static_cast<std::uint32_t>(_forms.size()));
    if (isNew)
        _forms.push_back({std::move(pieces)});
    row.text = found->second;
}

std::int64_t TimelineModel::getTime(Source& source, LogLine const& line, Run const* run)
{
    if (line.hasStamp) {
        const double resolution = run != nullptr && run->resolution > 0 ? run->resolution : 1e-9;
        const double nanoseconds = static_cast<double>(line.ticks) * (resolution * perSecond);
        if (run != nullptr && run->nanoseconds > 0 &&
            line.ticks <= static_cast<std::uint64_t>(longestTime / run->nanoseconds))
            source.time = static_cast<std::int64_t>(line.ticks) * run->nanoseconds;
        else
            source.time = nanoseconds < static_cast<double>(longestTime) ? static_cast<std::int64_t>(nanoseconds)
                                                                         : longestTime;
        source.hasStamps = true;
        _isOrdinal = false;
    } else if (line.kind == Kind::Started) {
        source.time = 0;
    }
    return source.hasStamps ? source.time : static_cast<std::int64_t>(source.rows) * perOrdinal;
}

void TimelineModel::addLine(int number, LogLine const& line, Run const* run)
{
    Source& source = *_sources[static_cast<std::size_t>(number)];
    if (!line.isStart) {
        const std::size_t room = longestText - std::min(source.text.size(), longestText);
        source.text += line.raw.substr(0, room);
        source.missing += line.raw.size() - std::min(line.raw.size(), room);
        return;
    }
    completeLine(source);
    if (line.kind == Kind::Blank)
        return;
    findRun(number, line.run, run);
    Row row;
    row.time = getTime(source, line, run);
    row.isOrdinal = !source.hasStamps;
    row.line = line.number;
    row.level = static_cast<signed char>(line.level);
    row.lost = line.kind == Kind::Overflow && line.lost > 0 ? static_cast<std::uint64_t>(line.lost) : 0;
    row.lane = findLane(number, line.run, line.hasStamp ? std::optional(line.thread) : std::nullopt);
    if (line.kind == Kind::Overflow)
        row.kind = RowKind::Loss;
    else if (line.kind == Kind::Message)
        row.kind = RowKind::Message;
    else if (line.kind != Kind::Plain)
        row.kind = RowKind::Banner;
    const std::string_view text = messageOf(line);
    source.text = text.substr(0, longestText);
    source.missing = text.size() - source.text.size();
    source.pending = row;
    ++source.rows;
}

/// Takes the line whose pieces are all there into the rows.
void TimelineModel::completeLine(Source& source)
{
    if (!source.pending)
        return;
    Row row = *source.pending;
    source.pending.reset();
    const std::uint64_t index = _rows.size();
    CallFinder& finder = _finders[row.lane];
    const bool isRow = row.kind == RowKind::Plain && source.report.addRow(source.text);
    // The message of a report ends with an empty line.
    const bool isLast = row.kind == RowKind::Plain && source.report.hasRows() && source.text.empty();
    if (isRow || isLast) {
        row.kind = RowKind::Profile;
        row.lane = source.reportLane;
        if (isLast)
            endReport(source);
    } else {
        endReport(source);
        if (source.report.begin(source.text)) {
            row.kind = RowKind::Profile;
            source.reportRow = index;
            source.reportLane = row.lane;
        } else if (row.kind == RowKind::Loss || source.text == "#") {
            finder.addLoss();  // "#" is all that a full queue has left of a text
        } else if (row.kind == RowKind::Plain || (row.kind == RowKind::Message && row.level == tracingLevel)) {
            // One depth for all threads shows where a call begins deeper than its thread's own calls are.
            RunStart& run = _runs[{_lanes[row.lane].source, _lanes[row.lane].run}];
            const int expected = run.sharesDepth ? -1 : finder.getExpectedDepth();
            const TraceLine traced = parseTraceLine(source.text, expected);
            run.sharesDepth |= traced.step == TraceStep::Enter && traced.depth > expected && expected >= 0;
            finder.addLine(index, traced);
            if (traced.step == TraceStep::Enter)
                row.kind = RowKind::Entered;
            else if (traced.step == TraceStep::Leave)
                row.kind = RowKind::Left;
            else if (traced.step == TraceStep::Text)
                row.kind = RowKind::TraceText;
        }
    }
    if (source.missing != 0)
        source.text += " [" + std::to_string(source.missing) + " more bytes]";
    setText(row, source.text);
    _rows.push_back(row);
    ++_lanes[row.lane].rows;
}

void TimelineModel::endReport(Source& source)
{
    const bool hasBegun = source.report.hasBegun();
    if (auto report = source.report.end())
        _reports.push_back({std::move(*report), source.reportRow});
    else if (hasBegun)  // only looked like a heading
        _rows[source.reportRow].kind = _lanes[source.reportLane].hasThread ? RowKind::Message : RowKind::Plain;
}

/// Seconds since 1970 as if the clocks on the wall showed UTC: the page shows dates as they are.
std::int64_t TimelineModel::civilSeconds(std::time_t time) const
{
    return static_cast<std::int64_t>(time) + _zone.getOffset(time);
}

/// Runs begin at their dates. One without a date begins with the earliest.
void TimelineModel::setStarts()
{
    std::int64_t first = std::numeric_limits<std::int64_t>::max();
    for (auto const& [key, run] : _runs)
        if (run.started)
            first = std::min(first, civilSeconds(*run.started));
    _hasDate = first != std::numeric_limits<std::int64_t>::max();
    for (auto& [key, run] : _runs)
        run.start = run.started && !_isOrdinal
                        ? std::min((civilSeconds(*run.started) - first), longestTime / perSecond) * perSecond
                        : 0;
    _start = _hasDate ? first : 0;
}

/// Puts the rows into the order of time, and tells where each row is now.
std::vector<std::uint64_t> TimelineModel::sortRows()
{
    for (Row& row : _rows) {
        Lane const& lane = _lanes[row.lane];
        if (row.isOrdinal && _sources[static_cast<std::size_t>(lane.source)]->hasStamps)
            row.time = 0;
        row.time += _runs[{lane.source, lane.run}].start;
    }
    std::vector<std::uint64_t> order(_rows.size());
    std::iota(order.begin(), order.end(), std::uint64_t(0));
    const auto isEarlier = [this](std::uint64_t left, std::uint64_t right) {
        return _rows[left].time < _rows[right].time;
    };
    std::stable_sort(order.begin(), order.end(), isEarlier);
    std::vector<std::uint64_t> places(order.size());
    std::vector<Row> sorted(order.size());
    for (std::size_t place = 0; place < order.size(); ++place) {
        places[order[place]] = place;
        sorted[place] = _rows[order[place]];
    }
    _rows = std::move(sorted);
    return places;
}

void TimelineModel::finish()
{
    for (auto& source : _sources) {
        completeLine(*source);
        endReport(*source);
    }
    setStarts();
    const std::vector<std::uint64_t> places = sortRows();
    for (std::uint32_t lane = 0; lane < _lanes.size(); ++lane) {
        _lanes[lane].unmatched = _finders[lane].getUnmatchedCount();
        for (CallFinder::Call const& call : _finders[lane].getCalls()) {
            const bool isOpen = call.left == CallFinder::none;
            // Other programs write "+ " as well: between lines of the log, only a call that ends is one.
            if (isOpen && !_lanes[lane].hasThread) {
                _rows[places[call.entered]].kind = RowKind::Plain;
                continue;
            }
            _calls.push_back({places[call.entered], isOpen ? CallFinder::none : places[call.left], lane, call.level,
                              call.isCut});
        }
    }
    std::sort(_calls.begin(), _calls.end(),
              [](Call const& left, Call const& right) { return left.entered < right.entered; });
    for (Report& report : _reports)
        report.row = places[report.row];
}

std::string TimelineModel::getText(std::uint64_t row) const
{
    Form const& form = _forms[_rows[row].text];
    std::string text = form.pieces.front();
    for (std::size_t i = 1; i < form.pieces.size(); ++i)
        text += shownNumber(_numbers[_rows[row].numbers + i - 1]) + form.pieces[i];
    return text;
}

std::string TimelineModel::encode() const
{
    std::string times, lanes, kinds, texts, lines, losses, pieceCounts, pieceLengths, pieces, modes, numbers,
        entered, left, levels;
    std::vector<std::vector<std::uint64_t>> rowsOf(_forms.size());
    std::vector<std::uint64_t> lineOf(_sources.size());
    std::int64_t time = 0;
    for (std::uint64_t index = 0; index < _rows.size(); ++index) {
        Row const& row = _rows[index];
        putNumber(times, static_cast<std::uint64_t>(row.time - time));
        time = row.time;
        putNumber(lanes, row.lane);
        kinds += static_cast<char>(static_cast<int>(row.kind) | (row.level + 1) << 4);
        putNumber(texts, row.text);
        std::uint64_t& line = lineOf[static_cast<std::size_t>(_lanes[row.lane].source)];
        putNumber(lines, folded(row.line, line + 1));
        line = row.line;
        if (row.kind == RowKind::Loss)
            putNumber(losses, row.lost);
        rowsOf[row.text].push_back(row.numbers);
    }
    for (std::size_t text = 0; text < _forms.size(); ++text) {
        putNumber(pieceCounts, _forms[text].pieces.size());
        for (std::string const& piece : _forms[text].pieces) {
            putNumber(pieceLengths, piece.size());
            pieces += piece;
        }
        for (std::size_t slot = 0; slot + 1 < _forms[text].pieces.size(); ++slot) {
            std::string plain, differences;
            std::uint64_t before = 0;
            for (const std::uint64_t first : rowsOf[text]) {
                const std::uint64_t value = _numbers[first + slot];
                putNumber(plain, value);
                putNumber(differences, folded(value, before));
                before = value;
            }
            const bool isPlain = plain.size() <= differences.size();
            modes += isPlain ? '\0' : '\1';
            numbers += isPlain ? plain : differences;
        }
    }
    std::uint64_t before = 0;
    for (Call const& call : _calls) {
        putNumber(entered, call.entered - before);
        before = call.entered;
        putNumber(left, call.left == CallFinder::none ? 0 : (call.left - call.entered) << 1 | (call.isCut ? 1 : 0));
        putNumber(levels, static_cast<std::uint64_t>(call.level));
    }
    const std::vector<std::pair<std::string, std::string>> columns = {
        {"times", std::move(times)},
        {"lanes", std::move(lanes)},
        {"kinds", std::move(kinds)},
        {"texts", std::move(texts)},
        {"lines", std::move(lines)},
        {"losses", std::move(losses)},
        {"pieceCounts", std::move(pieceCounts)},
        {"pieceLengths", std::move(pieceLengths)},
        {"pieces", std::move(pieces)},
        {"modes", std::move(modes)},
        {"numbers", std::move(numbers)},
        {"entered", std::move(entered)},
        {"left", std::move(left)},
        {"levels", std::move(levels)},
    };
    const std::string meta = encodeMeta(columns);
    std::string data;
    for (int shift = 0; shift < 32; shift += 8)
        data += static_cast<char>(meta.size() >> shift);
    data += meta;
    for (auto const& [name, column] : columns)
        data += column;
    return data;
}

std::string TimelineModel::encodeMeta(std::vector<std::pair<std::string, std::string>> const& columns) const
{
    std::string json = "{\"rows\":" + std::to_string(_rows.size()) + ",\"forms\":" + std::to_string(_forms.size()) +
                       ",\"calls\":" + std::to_string(_calls.size()) +
                       ",\"start\":" + (_hasDate ? std::to_string(_start) : "null") +
                       ",\"isOrdinal\":" + (_isOrdinal ? "true" : "false") + ",\"columns\":[";
    for (auto const& [name, column] : columns)
        json += (json.back() == '[' ? "[" : ",[") + asJson(name) + "," + std::to_string(column.size()) + "]";
    json += "],\"sources\":[";
    for (auto const& source : _sources)
        json += (json.back() == '[' ? "" : ",") + asJson(source->name);
    json += "],\"runs\":[";
    for (auto const& [key, run] : _runs)
        json += std::string(json.back() == '[' ? "" : ",") + "{\"source\":" + std::to_string(key.first) +
                ",\"run\":" + std::to_string(key.second) + ",\"start\":" + std::to_string(run.start) +
                ",\"started\":" + (run.started ? std::to_string(civilSeconds(*run.started)) : "null") +
                ",\"isStopped\":" + (run.isStopped ? "true" : "false") +
                ",\"hasResolution\":" + (run.hasResolution ? "true" : "false") + "}";
    json += "],\"lanes\":[";
    for (Lane const& lane : _lanes)
        json += std::string(json.back() == '[' ? "" : ",") + "{\"source\":" + std::to_string(lane.source) +
                ",\"run\":" + std::to_string(lane.run) +
                ",\"thread\":" + (lane.hasThread ? std::to_string(lane.thread) : "null") +
                ",\"unmatched\":" + std::to_string(lane.unmatched) + "}";
    json += "],\"reports\":[";
    for (Report const& report : _reports) {
        ProfileReport const& figures = report.figures;
        json += std::string(json.back() == '[' ? "" : ",") + "{\"row\":" + std::to_string(report.row) +
                ",\"kind\":" + std::to_string(static_cast<int>(figures.kind)) +
                ",\"name\":" + asJson(figures.name) + ",\"cycles\":" + asJson(figures.cycles) +
                ",\"total\":" + asJson(figures.total) + ",\"average\":" + asJson(figures.average) +
                ",\"minimum\":" + asJson(figures.minimum) + ",\"maximum\":" + asJson(figures.maximum) +
                ",\"deviation\":" + asJson(figures.deviation) + "}";
    }
    return json + "]}";
}

}  // namespace vnlog
