// The command merge: one pass over all files at once, with one line of each in memory.
//
// Each file has a head, its next line, with a time. The file with the earliest head writes lines until its head is later than
// that of another one; a heap has the others. Lines of one file keep their order, whatever their times are. A line without a time (a
// further line of a message, another program's) follows the line before it, and takes no part in the order.
//
// The banners of the files are not copied: one with a date becomes a line of the output, at its time. With -s ticks the output is a log
// itself, with one banner and ticks of a nanosecond since the second of the earliest start.
//
// What cannot be known is told in the end: lines without a time, and neighbours from two files that are closer than the
// second of their banners.
#include "merge.h"

#include "console.h"
#include "decimal.h"
#include "filter.h"
#include "logsource.h"
#include "settings.h"
#include "timetext.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <optional>
#include <stdexcept>

namespace vnlog
{
namespace
{
constexpr std::int64_t nanosecondsPerSecond = 1000000000;
constexpr std::int64_t beforeAll = std::numeric_limits<std::int64_t>::min();
constexpr std::size_t stampLength = 21;  // of the two numbers with the blank between them

struct MergeSettings
{
    FilterSettings filter;
    ZoneSettings zones;
    Setting<char const*> time{
        "merge.time",
        "s:", "-s WHAT: what stands in front of a message: date, or ticks, which makes the output a log itself",
        nullptr, "date"};
    Setting<int> digits{"merge.digits", "d:", "-d DIGITS: digits behind the second, 0 to 9", nullptr, "6"};
    Setting<bool> plain{"merge.plain", "n", "-n: without the names of the files", nullptr, "false"};
};

MergeSettings& getSettings()
{
    static MergeSettings settings;
    return settings;
}

bool isTimeForm(char const* text)
{
    return isOneOf(text, {"date", "ticks"});
}

/// One of the files, with its next line.
class Input
{
public:
    Input(FileOperand operand, MergeSettings const& settings)
        : _operand(std::move(operand)),
          _source(_operand.name, settings.zones.getWritten()),
          _filter(settings.filter, settings.zones.getShown())
    {
        refuseOwnOutput(_source);
    }

    /// Goes to the next line that is written; false at the end.
    bool next()
    {
        while (_source.next(_line)) {
            if (!_line.isStart) {
                if (_isWanted)
                    return true;
                continue;
            }
            _hasTime = findTime();
            _isWanted = isWanted();
            if (_isWanted)
                return true;
        }
        return false;
    }

    /// Nanoseconds since 1970 UTC: of the line, or of the last one before it that has a time.
    std::int64_t getTime() const { return _time; }
    bool hasTime() const { return _line.isStart && _hasTime; }
    LogLine const& getLine() const { return _line; }
    FileOperand const& getOperand() const { return _operand; }

    /// Where its first program started, if that is known yet.
    std::optional<std::int64_t> getStart() const
    {
        std::optional<std::time_t> const& started = _source.getRun(0).started;
        return started ? std::optional(*started * nanosecondsPerSecond + _operand.offset) : std::nullopt;
    }

    void tellDoubts() const
    {
        if (_timeless != 0)
            warn("'" + _operand.name + "': " + std::to_string(_timeless) +
                 " messages have no time, for lack of a banner with a date and a clock; each stands behind the "
                 "line before it");
        else if (_stamped == 0)
            warn("'" + _operand.name + "': no message has a time stamp; its order against others is not known");
        if (_backward != 0)
            warn("'" + _operand.name + "': " + std::to_string(_backward) +
                 " messages are earlier than the one before them; they stay where they are in their file");
    }

private:
    bool findTime()
    {
        std::optional<std::int64_t> time;
        if (_line.kind == Kind::StartedOn) {
            std::optional<std::time_t> const& started = _source.getRun(_line.run).started;
            time = started ? std::optional(*started * nanosecondsPerSecond) : std::nullopt;
        } else if (_line.hasStamp) {
            time = _source.getTime(_line);
            ++_stamped;
            _timeless += time ? 0u : 1u;
        }
        if (!time)
            return false;
        _backward += _line.hasStamp && *time + _operand.offset < _time ? 1u : 0u;
        _time = *time + _operand.offset;
        return true;
    }

    /// Of a banner only the date is wanted.
    bool isWanted()
    {
        const bool isChosen = _filter.isWanted(_source, _line);
        const bool isBanner = _line.kind == Kind::Started || _line.kind == Kind::ClockFrequency ||
                              _line.kind == Kind::Blank || _line.kind == Kind::Stopped;
        return isChosen && !isBanner;
    }

    FileOperand _operand;
    LogSource _source;
    Filter _filter;
    LogLine _line;
    bool _hasTime = false, _isWanted = false;
    std::int64_t _time = beforeAll;
    std::uint64_t _stamped = 0, _timeless = 0, _backward = 0;
};

/// Writes lines in the order in which it gets them.
class Writer
{
public:
    Writer(MergeSettings const& settings, Output& output, std::int64_t base)
        : _output(output),
          _time(settings.zones.getShown(), settings.digits.getValue()),
          _base(base),
          _isLog(std::strcmp(settings.time.getValue(), "ticks") == 0),
          _hasNames(!settings.plain.getValue())
    {
        if (_isLog)
            putBanner(settings.zones.getWritten());
    }

    void write(Input const& input)
    {
        LogLine const& line = input.getLine();
        // A half line of another file.
        if (!_isEnded && line.isStart)
            _output.put("\n");
        _text.clear();
        if (!input.hasTime())
            _text += line.raw;
        else if (_isLog)
            putTicks(input, line);
        else
            putDated(input, line);
        const bool isDropped = _isLog && line.kind == Kind::StartedOn;
        if (isDropped)
            return;
        _text += line.end;
        _isEnded = line.isWhole;
        _output.put(_text);
    }

    void close()
    {
        if (!_isEnded)
            _output.put("\n");
        if (_isLog)
            _output.put("===== Message Logger Stopped =====\n");
        _output.close();
    }

private:
    void putBanner(Zone const& zone)
    {
        constexpr std::string_view days = "ThuFriSatSunMonTueWed", months = "JanFebMarAprMayJunJulAugSepOctNovDec";
        const std::time_t second = static_cast<std::time_t>(_base / nanosecondsPerSecond);
        const Civil date = zone.getDate(second);
        const std::size_t day = static_cast<std::size_t>(((getDays(date.year, date.month, date.day) % 7) + 7) % 7);
        std::string text = "===== Message Logger Startup =====\n===== Started on ";
        text += days.substr(3 * day, 3);
        text += ' ';
        text += months.substr(3 * static_cast<std::size_t>(date.month - 1), 3);
        text += date.day < 10 ? "  " : " ";
        putNumber(text, date.day, 1);
        for (const auto& [mark, number] :
             {std::pair(' ', date.hour), std::pair(':', date.minute), std::pair(':', date.second)}) {
            text += mark;
            putNumber(text, number, 2);
        }
        text += ' ';
        putNumber(text, date.year, 1);
        _output.put(text + "\n\n===== Clock Frequency: 0.000000001\n");
    }

    void putTicks(Input const& input, LogLine const& line)
    {
        const std::int64_t ticks = std::max<std::int64_t>(0, input.getTime() - _base);
        putNumber(_text, ticks >> 32, 10);
        _text += ' ';
        putNumber(_text, ticks & 0xffffffff, 10);
        _text += line.raw.substr(std::min(stampLength, line.raw.size()));
    }

    void putDated(Input const& input, LogLine const& line)
    {
        _time.putDate(_text, input.getTime());
        if (_hasNames) {
            _text += " [";
            putShown(_text, input.getOperand().name);
            _text += ']';
        }
        if (line.hasStamp)
            _text += line.raw.substr(stampLength);
        else {
            _text += ' ';
            _text += line.raw;
        }
    }

    Output& _output;
    TimeText _time;
    std::int64_t _base;
    bool _isLog, _hasNames;
    bool _isEnded = true;
    std::string _text;
};

using Inputs = std::vector<std::unique_ptr<Input>>;

/// For a heap with the earliest head on top; of two at one time, the one that was named first.
struct IsLater
{
    bool operator()(std::pair<std::int64_t, std::size_t> const& a,
                    std::pair<std::int64_t, std::size_t> const& b) const
    {
        return a > b;
    }
};

/// How many neighbours are in doubt.
class Doubts
{
public:
    void add(Input const& input)
    {
        if (_last != nullptr && _last != &input && input.getTime() - _time < nanosecondsPerSecond &&
            !(_last->getOperand().hasOffset && input.getOperand().hasOffset))
            ++_count;
        if (_last != &input)
            ++_neighbours;
        _last = &input;
        _time = input.getTime();
    }

    void tell() const
    {
        if (_count != 0)
            warn(std::to_string(_count) + " of " + std::to_string(_neighbours - 1) +
                 " times that the file changes, the lines are closer than a second, which is as exact as the dates "
                 "of "
                 "banners are; FILE:+0.5s moves a file that you know better");
    }

private:
    Input const* _last = nullptr;
    std::int64_t _time = 0;
    std::uint64_t _count = 0, _neighbours = 0;
};

Inputs openAll(std::vector<std::string> const& operands, MergeSettings const& settings)
{
    Inputs inputs;
    for (std::string const& operand : getNames(operands))
        inputs.push_back(std::make_unique<Input>(parseOperand(operand), settings));
    for (std::size_t i = 0; i < inputs.size(); ++i)
        for (std::size_t j = 0; j < i; ++j)
            if (inputs[i]->getOperand().name == "-" && inputs[j]->getOperand().name == "-")
                throw WrongUse("standard input can be read once");
    return inputs;
}

/// The second of the earliest start. Throws if a log is wanted and no file has a date.
std::int64_t findBase(Inputs const& inputs, MergeSettings const& settings)
{
    std::optional<std::int64_t> base;
    for (auto const& input : inputs)
        if (const std::optional<std::int64_t> start = input->getStart())
            base = std::min(base.value_or(*start), *start);
    if (!base && std::strcmp(settings.time.getValue(), "ticks") == 0)
        throw std::runtime_error(
            "no file begins with a banner that has a date, so there is no start to count from");
    const std::int64_t rest = base.value_or(0) % nanosecondsPerSecond;
    return base.value_or(0) - (rest < 0 ? rest + nanosecondsPerSecond : rest);
}
}  // namespace

FileOperand parseOperand(std::string const& operand)
{
    static constexpr std::array<std::pair<std::string_view, double>, 7> units = {
        {{"", 1e9}, {"s", 1e9}, {"ms", 1e6}, {"us", 1e3}, {"ns", 1}, {"m", 60e9}, {"h", 3600e9}}};
    const FileOperand plain = {operand, 0, false};
    const std::size_t colon = operand.rfind(':');
    if (colon == std::string::npos || colon == 0 || colon + 2 >= operand.size() ||
        (operand[colon + 1] != '+' && operand[colon + 1] != '-') || InputFile::findIdentity(operand))
        return plain;
    double number = 0;
    char const* const begin = operand.data() + colon + 2;
    char const* const end = operand.data() + operand.size();
    // Without an exponent: what follows the number is its unit.
    char const* const digitsEnd = std::find_if(begin, end, [](char c) { return c != '.' && (c < '0' || c > '9'); });
    const auto [stop, error] = readDecimal(begin, digitsEnd, number);
    const std::string_view unit(stop, static_cast<std::size_t>(end - stop));
    const auto found =
        std::find_if(units.begin(), units.end(), [unit](auto const& one) { return one.first == unit; });
    if (error != std::errc() || *begin == '-' || found == units.end() || !(number * found->second < 1e18))
        return plain;
    const std::int64_t amount = std::llround(number * found->second);
    return {operand.substr(0, colon), operand[colon + 1] == '-' ? -amount : amount, true};
}

Vn::InUsage getMergeUsage()
{
    MergeSettings const& settings = getSettings();
    Vn::InUsage usage("Brings the lines of logs into one order, by the dates and the clocks of their banners.");
    usage.operands("FILE[:OFFSET]...");
    settings.filter.explain(usage);
    settings.zones.explain(usage);
    usage.expect(settings.time.getVariable(), "date or ticks", isTimeForm)
        .expect(settings.digits.getVariable(), "0 to 9 digits", isDigitCount)
        .note("An OFFSET is added to the times of a file: a.log:+0.012s, b.log:-3ms. Units are h, m, s, ms, us and "
              "ns.")
        .note(
            "A line without a time follows the line before it in its file, whose order never changes. A banner "
            "becomes one "
            "line, at the time of its date. The dates of banners have whole seconds: where lines of two files are "
            "closer than that, their order is a guess, and standard error tells how often.");
    return usage;
}

int runMerge(std::vector<std::string> const& operands)
{
    MergeSettings const& settings = getSettings();
    const Inputs inputs = openAll(operands, settings);
    std::vector<std::pair<std::int64_t, std::size_t>> heap;
    for (std::size_t i = 0; i < inputs.size(); ++i)
        if (inputs[i]->next())
            heap.emplace_back(inputs[i]->getTime(), i);
    std::make_heap(heap.begin(), heap.end(), IsLater());
    Output output;
    Writer writer(settings, output, findBase(inputs, settings));
    Doubts doubts;
    while (!heap.empty()) {
        std::pop_heap(heap.begin(), heap.end(), IsLater());
        const std::size_t index = heap.back().second;
        heap.pop_back();
        Input& input = *inputs[index];
        bool isMore = true;
        // Lines without a time keep that of the line before them, and come first among equals: nothing gets between.
        do {
            if (input.hasTime())
                doubts.add(input);
            writer.write(input);
            isMore = input.next();
        } while (isMore &&
                 (!input.hasTime() || heap.empty() || !IsLater()({input.getTime(), index}, heap.front())));
        if (isMore) {
            heap.emplace_back(input.getTime(), index);
            std::push_heap(heap.begin(), heap.end(), IsLater());
        }
    }
    writer.close();
    for (auto const& input : inputs)
        input->tellDoubts();
    doubts.tell();
    return success;
}

}  // namespace vnlog
