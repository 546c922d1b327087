// Which lines are wanted, from the options to a decision for each line.
//
// The cheapest question comes first: the level is a bit, thread and group are compared, and times and texts are looked at only
// for what is left.
#include "filter.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace vnlog
{
namespace
{
constexpr std::int64_t nanosecondsPerSecond = 1000000000;
constexpr int levelCount = 7;
constexpr int profiling = 6;
constexpr unsigned allLevels = (1u << levelCount) - 1;

char lowered(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::string lowered(std::string_view text)
{
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), [](char c) { return lowered(c); });
    return result;
}

std::optional<std::uint32_t> parseThread(std::string const& text)
{
    const bool isHex = text.starts_with("0x") || text.starts_with("0X");
    char const* const begin = text.data() + (isHex ? 2 : 0);
    char const* const end = text.data() + text.size();
    std::uint32_t number = 0;
    const auto [stop, error] = std::from_chars(begin, end, number, isHex ? 16 : 10);
    return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

/// A number without a sign that takes all of the text.
std::optional<int> readNumber(std::string_view text)
{
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isRight = error == std::errc() && end == text.data() + text.size() && text[0] != '-';
    return isRight ? std::optional(number) : std::nullopt;
}

/// "12", "12.5" in nanoseconds; digits beyond the ninth are dropped.
std::optional<std::int64_t> readSeconds(std::string_view text)
{
    const std::size_t point = std::min(text.find('.'), text.size());
    const std::optional<int> whole = readNumber(text.substr(0, point));
    if (!whole)
        return std::nullopt;
    std::int64_t rest = 0, unit = nanosecondsPerSecond;
    for (const char c : text.substr(std::min(point + 1, text.size()))) {
        if (c < '0' || c > '9')
            return std::nullopt;
        unit /= 10;
        rest += (c - '0') * unit;
    }
    return *whole * nanosecondsPerSecond + rest;
}

/// "17:18" or "17:18:19.5" in nanoseconds since midnight.
std::optional<std::int64_t> readTimeOfDay(std::string_view text)
{
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos)
        return std::nullopt;
    const std::string_view rest = text.substr(colon + 1);
    const std::size_t second = std::min(rest.find(':'), rest.size());
    const std::optional<int> hours = readNumber(text.substr(0, colon)),
                             minutes = readNumber(rest.substr(0, second));
    const std::optional<std::int64_t> seconds =
        second < rest.size() ? readSeconds(rest.substr(second + 1)) : std::optional(std::int64_t{0});
    if (!hours || !minutes || !seconds || *hours > 23 || *minutes > 59 || *seconds > 60 * nanosecondsPerSecond)
        return std::nullopt;
    return (*hours * 3600 + *minutes * 60) * nanosecondsPerSecond + *seconds;
}

bool isLevel(char const* text)
{
    return *text == '\0' || parseLevel(text) >= 0;
}

bool areLevels(char const* text)
{
    const std::vector<std::string> words = getWords(text);
    return std::all_of(words.begin(), words.end(), [](std::string const& word) { return parseLevel(word) >= 0; });
}

bool areThreads(char const* text)
{
    const std::vector<std::string> words = getWords(text);
    return std::all_of(words.begin(), words.end(),
                       [](std::string const& word) { return parseThread(word).has_value(); });
}

bool isTime(char const* text)
{
    return *text == '\0' || parseTime(text, Zone());
}

bool isExpression(char const* text)
{
    try {
        const Pattern pattern(text, false);
        return true;
    } catch (std::runtime_error const&) {
        return false;
    }
}

bool isForeign(char const* text)
{
    return isOneOf(text, {"with", "keep", "drop"});
}

/// The text as an expression that means it and nothing else.
std::string quoted(std::string const& text)
{
    std::string result;
    for (const char c : text) {
        if (std::strchr(".[]{}()*+?^$|\\", c) != nullptr)
            result += '\\';
        result += c;
    }
    return result;
}
}  // namespace

void FilterSettings::explain(Vn::InUsage& usage) const
{
    char const* const times = "a time: 2026-11-22, 2026-11-22T17:18:19.5, 17:18, or +12.5";
    usage.expect(threshold.getVariable(), "a level, as Warning or profiling", isLevel)
        .expect(levels.getVariable(), "levels, as Error,Warning", areLevels)
        .expect(threads.getVariable(), "ids of threads, as 0x1a2b,0x1a2c", areThreads)
        .expect(after.getVariable(), times, isTime)
        .expect(before.getVariable(), times, isTime)
        .expect(expression.getVariable(), "an extended regular expression", isExpression)
        .expect(foreign.getVariable(), "with, keep or drop", isForeign)
        .note("Levels, the most severe first: Internal Error, Fatal Error, Error, Warning, Informational, Tracing; "
              "Profiling stands apart. \"internal\" and \"fatal\" do as well.")
        .note("Times:\n  2026-11-22T17:18:19.5  a date, in the zone of -z; less will do, as 2026-11-22\n"
              "  17:18:19  that time of the day on which the program had started\n"
              "  +12.5  seconds since the program had started");
}

std::optional<TimeLimit> parseTime(std::string const& text, Zone const& zone)
{
    if (text.starts_with('+')) {
        const std::optional<std::int64_t> seconds = readSeconds(std::string_view(text).substr(1));
        return seconds ? std::optional(TimeLimit{TimeLimit::SinceStart, *seconds}) : std::nullopt;
    }
    if (text.size() < 10 || text[4] != '-' || text[7] != '-') {
        const std::optional<std::int64_t> time = readTimeOfDay(text);
        return time ? std::optional(TimeLimit{TimeLimit::TimeOfDay, *time}) : std::nullopt;
    }
    const std::string_view date = text;
    const std::optional<int> year = readNumber(date.substr(0, 4)), month = readNumber(date.substr(5, 2)),
                             day = readNumber(date.substr(8, 2));
    std::optional<std::int64_t> time = 0;
    if (date.size() > 10)
        time = date[10] == ' ' || date[10] == 'T' ? readTimeOfDay(date.substr(11)) : std::nullopt;
    if (!year || !month || !day || !time)
        return std::nullopt;
    const int seconds = static_cast<int>(*time / nanosecondsPerSecond);
    const std::optional<std::time_t> found =
        zone.find({*year, *month, *day, seconds / 3600, seconds / 60 % 60, seconds % 60});
    // Nanoseconds have room for three centuries on either side of 1970.
    if (!found || *found > 9000000000 || *found < -9000000000)
        return std::nullopt;
    return TimeLimit{TimeLimit::Date, *found * nanosecondsPerSecond + *time % nanosecondsPerSecond};
}

int parseLevel(std::string const& word)
{
    const std::string wanted = lowered(word);
    for (int level = 0; level < levelCount; ++level) {
        const std::string full = lowered(getLevelWord(level));
        if (wanted == full || (!wanted.empty() && wanted + " error" == full))
            return level;
    }
    return -1;
}

bool isLike(std::string_view name, std::string_view pattern)
{
    // Where the last * stood, and what it has taken: a mismatch lets it take one more.
    std::size_t n = 0, p = 0, star = std::string_view::npos, taken = 0;
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            taken = n;
        } else if (p < pattern.size() && (pattern[p] == '?' || pattern[p] == name[n])) {
            ++p;
            ++n;
        } else if (star != std::string_view::npos) {
            p = star + 1;
            n = ++taken;
        } else
            return false;
    }
    return pattern.find_first_not_of('*', p) == std::string_view::npos;
}

Filter::Filter(FilterSettings const& settings, Zone zone)
    : _zone(std::move(zone)), _groups(getWords(settings.groups.getValue())), _text(settings.text.getValue())
{
    if (const int level = parseLevel(settings.threshold.getValue()); level >= 0)
        _levels = level == profiling ? 1u << profiling : (2u << level) - 1;
    const std::vector<std::string> levels = getWords(settings.levels.getValue());
    unsigned listed = 0;
    for (std::string const& word : levels)
        listed |= 1u << parseLevel(word);
    if (!levels.empty())
        _levels = *settings.threshold.getValue() != '\0' ? _levels | listed : listed;
    for (std::string const& word : getWords(settings.threads.getValue()))
        _threads.push_back(parseThread(word).value());
    _after = parseTime(settings.after.getValue(), _zone);
    _before = parseTime(settings.before.getValue(), _zone);
    const bool ignoresCase = settings.ignoresCase.getValue();
    if (ignoresCase && !_text.empty()) {
        _plainPattern = std::make_unique<Pattern>(quoted(_text), true);
        _text.clear();
    }
    const std::string expression = settings.expression.getValue();
    if (!expression.empty())
        _pattern = std::make_unique<Pattern>(expression, ignoresCase);
    const std::string foreign = settings.foreign.getValue();
    _foreign = foreign == "keep" ? Foreign::Keep : foreign == "drop" ? Foreign::Drop : Foreign::With;
    _isChoosing = (_levels & allLevels) != allLevels || !_groups.empty() || !_threads.empty() || _after ||
                  _before || !_text.empty() || _pattern || _plainPattern;
}

bool Filter::isWanted(LogSource const& source, LogLine const& line)
{
    if (line.isStart)
        _isLastWanted =
            line.hasStamp || line.kind == Kind::Overflow ? isMessageWanted(source, line) : isOtherWanted(line);
    if (line.hasStamp) {
        _isMessageOpen = true;
        _isMessageWanted = _isLastWanted;
    }
    return _isLastWanted;
}

/// Banners and what has no stamp.
bool Filter::isOtherWanted(LogLine const& line)
{
    if (line.kind != Kind::Plain) {
        _isMessageOpen = false;
        return !_isChoosing;
    }
    if (_foreign != Foreign::With)
        return _foreign == Foreign::Keep;
    if (_isMessageOpen)
        return _isMessageWanted;
    return isAloneWanted(line);
}

bool Filter::isMessageWanted(LogSource const& source, LogLine const& line) const
{
    if (!_isChoosing)
        return true;
    return (_levels >> line.level & 1u) != 0 &&
           (_threads.empty() ||
            (line.hasStamp && std::find(_threads.begin(), _threads.end(), line.thread) != _threads.end())) &&
           (_groups.empty() || isGroupWanted(line.group)) && isTimeWanted(source, line) &&
           isTextWanted(line.group.empty()
                            ? line.text
                            : std::string_view(line.group.data(), line.group.size() + 1 + line.text.size()));
}

/// Of a message without a stamp only its words are known.
bool Filter::isAloneWanted(LogLine const& line) const
{
    const bool asksForMore = (_levels & allLevels) != allLevels || !_threads.empty() || _after || _before;
    return !asksForMore && (_groups.empty() || isGroupWanted(line.raw.substr(0, line.raw.find(' ')))) &&
           isTextWanted(line.raw);
}

bool Filter::isGroupWanted(std::string_view group) const
{
    return std::any_of(_groups.begin(), _groups.end(),
                       [group](std::string const& pattern) { return isLike(group, pattern); });
}

bool Filter::isTextWanted(std::string_view text) const
{
    return (_text.empty() || text.find(_text) != std::string_view::npos) &&
           (!_plainPattern || _plainPattern->isIn(text)) && (!_pattern || _pattern->isIn(text));
}

bool Filter::isTimeWanted(LogSource const& source, LogLine const& line) const
{
    const auto isLater = [&](TimeLimit const& limit) -> std::optional<bool> {
        const bool isAbsolute = limit.form != TimeLimit::SinceStart;
        const std::optional<std::int64_t> time = isAbsolute ? source.getTime(line) : source.getSinceStart(line);
        const std::optional<std::int64_t> end = getLimit(limit, source, line);
        return time && end ? std::optional(*time >= *end) : std::nullopt;
    };
    return (!_after || isLater(*_after) == true) && (!_before || isLater(*_before) == false);
}

std::optional<std::int64_t> Filter::getLimit(TimeLimit const& limit, LogSource const& source,
                                             LogLine const& line) const
{
    if (limit.form != TimeLimit::TimeOfDay)
        return limit.nanoseconds;
    const std::optional<std::time_t> started = source.getRun(line.run).started;
    if (!started)
        return std::nullopt;
    Civil date = _zone.getDate(*started);
    const int seconds = static_cast<int>(limit.nanoseconds / nanosecondsPerSecond);
    date.hour = seconds / 3600;
    date.minute = seconds / 60 % 60;
    date.second = seconds % 60;
    const std::optional<std::time_t> time = _zone.find(date);
    return time ? std::optional(*time * nanosecondsPerSecond + limit.nanoseconds % nanosecondsPerSecond)
                : std::nullopt;
}

}  // namespace vnlog
