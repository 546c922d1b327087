// The command stats: one pass over the files, into tables that do not grow with them.
//
// A row (of all messages, of a level, a group, a thread) has a count, the span, the longest gap between two of its messages and its
// busiest second. Groups and threads beyond a limit share one row. Times are dates; where a file has none, seconds since the
// start of the program. Tables are sorted by count.
#include "stats.h"

#include "console.h"
#include "filter.h"
#include "logsource.h"
#include "settings.h"
#include "timehistogram.h"
#include "timetext.h"

#include <base/osterminal.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <map>

namespace vnlog
{
namespace
{
constexpr std::int64_t nanosecondsPerSecond = 1000000000;
constexpr std::size_t mostRows = 10000;
constexpr int histogramLines = 6;

struct StatsSettings
{
    FilterSettings filter;
    ZoneSettings zones;
    Setting<int> rows{"stats.rows", "n:", "-n ROWS: rows of each table, the largest first; 0 is all", nullptr,
                      "10"};
    Setting<bool> ascii{"stats.ascii", "A", "-A: draw with ASCII alone, as where the locale isn't UTF-8",
                        "VNLOG_ASCII", "false"};
};

StatsSettings& getSettings()
{
    static StatsSettings settings;
    return settings;
}

bool isCount(char const* text)
{
    unsigned number = 0;
    char const* const end = text + std::char_traits<char>::length(text);
    const auto [stop, error] = std::from_chars(text, end, number);
    return error == std::errc() && stop == end && number <= 1000000;
}

/// What is known of a set of messages.
struct Tally
{
    std::uint64_t messages = 0, lost = 0;
    bool hasTime = false;
    std::int64_t first = 0, last = 0, previous = 0;
    std::int64_t gap = 0, gapBegin = 0;  ///< the longest, and when it began
    std::int64_t second = 0, busiest = 0;
    std::uint64_t inSecond = 0, peak = 0;  ///< of the present second, and of the busiest one

    void add(LogLine const& line, std::optional<std::int64_t> time)
    {
        if (line.kind == Kind::Overflow)
            lost += static_cast<std::uint64_t>(std::max(0l, line.lost));
        else
            ++messages;
        if (time)
            addTime(*time);
    }

    double getRate() const
    {
        const double span = static_cast<double>(last - first) / 1e9;
        return span > 0 ? static_cast<double>(messages) / span : 0;
    }

private:
    void addTime(std::int64_t time)
    {
        if (!hasTime)
            first = last = previous = time;
        hasTime = true;
        // Of files with overlapping times, and of processes in one file, what goes back is no gap.
        if (time - previous > gap) {
            gap = time - previous;
            gapBegin = previous;
        }
        previous = time;
        first = std::min(first, time);
        last = std::max(last, time);
        const std::int64_t now = time / nanosecondsPerSecond;
        inSecond = now == second && peak != 0 ? inSecond + 1 : 1;
        second = now;
        if (inSecond > peak) {
            peak = inSecond;
            busiest = now;
        }
    }
};

/// A table with a limit: the names that come after it share a row.
class Table
{
public:
    explicit Table(char const* rest) : _rest(rest) {}

    Tally& operator[](std::string_view name)
    {
        // Neighbours often have the same name.
        if (_last != nullptr && _last->first == name)
            return _last->second;
        auto found = _rows.find(name);
        if (found == _rows.end())
            found = _rows.try_emplace(_rows.size() < mostRows ? std::string(name) : _rest).first;
        _last = &*found;
        return found->second;
    }

    /// The largest first; of equal ones by name.
    std::vector<std::pair<std::string, Tally const*>> getSorted() const
    {
        std::vector<std::pair<std::string, Tally const*>> rows;
        for (auto const& [name, tally] : _rows)
            rows.emplace_back(name, &tally);
        std::stable_sort(rows.begin(), rows.end(), [](auto const& a, auto const& b) {
            return a.second->messages + a.second->lost > b.second->messages + b.second->lost;
        });
        return rows;
    }

private:
    std::string _rest;
    std::map<std::string, Tally, std::less<>> _rows;
    std::pair<std::string const, Tally>* _last = nullptr;
};

/// All that is counted.
struct Counts
{
    explicit Counts(std::size_t columns) : histogram(columns) {}

    std::uint64_t lines = 0, bytes = 0, banners = 0, foreign = 0, overflows = 0;
    int starts = 0, stops = 0;
    bool hasDates = false, hasTimeless = false;
    Tally all;
    std::array<Tally, 7> levels;
    Table groups{"(other groups)"}, threads{"(other threads)"};
    TimeHistogram histogram;

    void add(LogSource const& source, LogLine const& line, Filter& filter)
    {
        bytes += line.raw.size() + line.end.size();
        lines += line.isStart ? 1u : 0u;
        const bool isWanted = filter.isWanted(source, line);
        if (!line.isStart)
            return;
        switch (line.kind) {
        case Kind::Message:
        case Kind::Overflow:
            if (isWanted)
                addMessage(source, line);
            return;
        case Kind::Plain:
            ++foreign;
            return;
        case Kind::Started:
            ++starts;
            break;
        case Kind::Stopped:
            ++stops;
            break;
        case Kind::StartedOn:
        case Kind::ClockFrequency:
        case Kind::Blank:
            break;
        }
        ++banners;
    }

private:
    void addMessage(LogSource const& source, LogLine const& line)
    {
        std::optional<std::int64_t> time = source.getTime(line);
        hasDates = hasDates || time;
        if (!time && !hasDates)
            time = source.getSinceStart(line);
        hasTimeless = hasTimeless || !time;
        overflows += line.kind == Kind::Overflow ? 1u : 0u;
        all.add(line, time);
        levels[static_cast<std::size_t>(line.level)].add(line, time);
        // Whose messages were lost, the line does not say.
        if (line.kind == Kind::Message)
            groups[line.group].add(line, time);
        if (line.hasStamp) {
            char name[11];
            threads[{name, static_cast<std::size_t>(std::snprintf(name, sizeof name, "0x%08x", line.thread))}].add(
                line, time);
        }
        if (time)
            histogram.add(*time);
    }
};

/// Prints the tables.
class Report
{
public:
    Report(StatsSettings const& settings, Counts const& counts, Output& output)
        : _settings(settings), _counts(counts), _output(output), _time(settings.zones.getShown(), 3)
    {}

    void print()
    {
        Counts const& c = _counts;
        put(std::to_string(c.lines) + " lines, " + std::to_string(c.bytes) + " bytes: " +
            std::to_string(c.all.messages) + " messages, " + std::to_string(c.overflows) + " overflows, " +
            std::to_string(c.banners) + " of banners, " + std::to_string(c.foreign) + " of others");
        put(std::to_string(c.starts) + " starts, " + std::to_string(c.stops) + " stops, " +
            std::to_string(c.all.lost) + " messages lost");
        if (c.all.hasTime) {
            put("From " + dateOf(c.all.first) + " to " + dateOf(c.all.last) + ", " +
                secondsOf(c.all.last - c.all.first) + " s, " + rateOf(c.all) + " messages/s");
            put("Longest gap: " + secondsOf(c.all.gap) + " s, from " + dateOf(c.all.gapBegin));
            put("Busiest second: " + dateOf(c.all.busiest * nanosecondsPerSecond) + ", " +
                std::to_string(c.all.peak) + " lines");
        }
        if (c.hasTimeless)
            put("Some messages have no time, and count in no rate, gap, or column.");
        printLevels();
        printTable("Group", c.groups.getSorted());
        printTable("Thread", c.threads.getSorted());
        printHistogram();
    }

private:
    void put(std::string const& line)
    {
        _output.put(line);
        _output.put("\n");
    }

    std::string dateOf(std::int64_t time)
    {
        std::string text;
        if (_counts.hasDates)
            _time.putDate(text, time);
        else
            text = secondsOf(time) + " s";
        return text;
    }

    std::string secondsOf(std::int64_t nanoseconds) const
    {
        std::string text;
        _time.putSeconds(text, nanoseconds, false);
        return text.substr(text.find_first_not_of(' '));
    }

    static std::string rateOf(Tally const& tally)
    {
        char text[40];
        std::snprintf(text, sizeof text, "%.1f", tally.getRate());
        return tally.hasTime && tally.last > tally.first ? text : "-";
    }

    void printHead(char const* name)
    {
        char line[160];
        std::snprintf(line, sizeof line, "\n%-24s %12s %6s %10s %12s %10s %14s", name, "Messages", "%", "Lost",
                      "Messages/s", "Peak/s", "Longest gap/s");
        put(line);
    }

    void printRow(std::string const& name, Tally const& tally)
    {
        const double part = _counts.all.messages != 0 ? 100.0 * static_cast<double>(tally.messages) /
                                                            static_cast<double>(_counts.all.messages)
                                                      : 0;
        char line[200];
        std::snprintf(line, sizeof line, " %12llu %6.2f %10llu %12s %10llu %14s",
                      static_cast<unsigned long long>(tally.messages), part,
                      static_cast<unsigned long long>(tally.lost), rateOf(tally).c_str(),
                      static_cast<unsigned long long>(tally.peak), secondsOf(tally.gap).c_str());
        std::string shown;
        putShown(shown, name.empty() ? "(no group)" : name);
        shown.resize(std::max<std::size_t>(shown.size(), 24), ' ');
        put(shown + line);
    }

    void printLevels()
    {
        printHead("Level");
        for (std::size_t level = 0; level < _counts.levels.size(); ++level)
            if (_counts.levels[level].messages + _counts.levels[level].lost != 0)
                printRow(std::string(getLevelWord(static_cast<int>(level))), _counts.levels[level]);
    }

    void printTable(char const* name, std::vector<std::pair<std::string, Tally const*>> const& rows)
    {
        if (rows.empty())
            return;
        const int wanted = _settings.rows.getValue();
        const std::size_t count =
            wanted == 0 ? rows.size() : std::min(rows.size(), static_cast<std::size_t>(wanted));
        printHead(name);
        for (std::size_t i = 0; i < count; ++i)
            printRow(rows[i].first, *rows[i].second);
        if (count < rows.size())
            put("and " + std::to_string(rows.size() - count) + " more; -n 0 shows all");
    }

    void printHistogram()
    {
        const std::vector<std::uint64_t> columns = _counts.histogram.getCounts();
        if (columns.empty())
            return;
        const std::uint64_t most = *std::max_element(columns.begin(), columns.end());
        put("\nLines over time; a column is " + secondsOf(_counts.histogram.getWidth()) + " s, the highest has " +
            std::to_string(most));
        const bool isAscii = _settings.ascii.getValue() || !isUtf8();
        for (std::string const& line : drawColumns(columns, histogramLines, isAscii))
            put(line.substr(0, line.find_last_not_of(' ') + 1));
        put(dateOf(_counts.histogram.getBegin()));
    }

    StatsSettings const& _settings;
    Counts const& _counts;
    Output& _output;
    TimeText _time;
};
}  // namespace

Vn::InUsage getStatsUsage()
{
    StatsSettings const& settings = getSettings();
    Vn::InUsage usage("Counts messages by level, group and thread, and draws them over time.");
    usage.operands("[FILE]...");
    settings.filter.explain(usage);
    settings.zones.explain(usage);
    usage.expect(settings.rows.getVariable(), "0 to 1000000 rows", isCount)
        .note("Several files are counted as one. Rates are those between a row's first and last message; a second "
              "begins "
              "where that of the clock does. An overflow counts as a line of its level, with the messages that it "
              "lost.");
    return usage;
}

int runStats(std::vector<std::string> const& operands)
{
    StatsSettings const& settings = getSettings();
    Counts counts(static_cast<std::size_t>(std::max(20, Vn::OsTerminal::getColumns() - 1)));
    for (std::string const& name : getNames(operands)) {
        LogSource source(name, settings.zones.getWritten());
        refuseOwnOutput(source);
        Filter filter(settings.filter, settings.zones.getShown());
        LogLine line;
        while (source.next(line))
            counts.add(source, line, filter);
    }
    Output output;
    Report(settings, counts, output).print();
    output.close();
    return success;
}

}  // namespace vnlog
