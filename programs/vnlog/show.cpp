// The command show: each line that the filter wants, with a time that people can read in place of the ticks.
//
// A line with a stamp is written as time, and the rest from the thread on, to the byte. All else is written as it is: a file that
// has neither a date nor a resolution is shown with its ticks. Where the output is a terminal, or a pager on one, control characters
// of the messages stand as text, so that a log cannot command the terminal.
#include "show.h"

#include "console.h"
#include "filewatch.h"
#include "filter.h"
#include "logsource.h"
#include "settings.h"
#include "timetext.h"

#include <base/osterminal.h>

#include <array>
#include <memory>
#include <optional>

namespace vnlog
{
namespace
{
struct ShowSettings
{
    FilterSettings filter;
    ZoneSettings zones;
    Setting<char const*> time{
        "show.time", "s:",
        "-s WHAT: what stands in front of a message: date, start (seconds since the program's "
        "start), before (since the message shown before), or ticks",
        nullptr, "date"};
    Setting<int> digits{"show.digits", "d:", "-d DIGITS: digits behind the second, 0 to 9", nullptr, "6"};
    Setting<char const*> colour{"show.colour",
                                "c:", "-c WHEN: colours: always, never, or auto, which is on a terminal",
                                "VNLOG_COLOUR", "auto"};
    Setting<bool> plain{"show.plain", "P", "-P: no pager", "VNLOG_NO_PAGER", "false"};
    Setting<bool> follow{"show.follow", "f",
                         "-f: go on when the file grows, is begun anew, or another file takes its name", nullptr,
                         "false"};
    Setting<bool> quit{"show.quit", "q", "-q: with -f, end behind the banner with which the program's log stops",
                       nullptr, "false"};
    Setting<bool> count{"show.count", "u",
                        "-u: tell in the end on standard error how many lines the logger did not write", nullptr,
                        "false"};
};

ShowSettings& getSettings()
{
    static ShowSettings settings;
    return settings;
}

bool isTimeForm(char const* text)
{
    return isOneOf(text, {"date", "start", "before", "ticks"});
}

bool isColourForm(char const* text)
{
    return isOneOf(text, {"always", "never", "auto"});
}

/// By level: errors red, warnings yellow, the rest quieter.
constexpr std::array<std::string_view, 7> levelColours = {"\x1b[1;31m", "\x1b[1;31m", "\x1b[31m", "\x1b[33m",
                                                          "\x1b[32m",   "\x1b[36m",   "\x1b[35m"};
constexpr std::string_view faint = "\x1b[2m", bold = "\x1b[1m", noColour = "\x1b[0m";

constexpr std::size_t stampLength = 21;   // of the two numbers with the blank between them
constexpr std::size_t threadLength = 14;  // " (0x00001a2b) "

/// Writes lines as the settings ask for them.
class Printer
{
public:
    Printer(ShowSettings const& settings, Output& output, bool isTerminal)
        : _output(output), _time(settings.zones.getShown(), settings.digits.getValue()), _isTerminal(isTerminal)
    {
        const std::string form = settings.time.getValue();
        _form = form == "date" ? Date : form == "start" ? Start : form == "before" ? Before : Ticks;
        const std::string colour = settings.colour.getValue();
        _isColoured = colour == "always" || (colour == "auto" && hasColours());
    }

    void print(LogSource const& source, LogLine const& line)
    {
        _text.clear();
        if (!line.hasStamp || !line.isStart)
            putOther(line);
        else {
            putTime(source, line);
            putMessage(line);
        }
        // A half line stays one, unless something follows it.
        _text += line.isWhole ? line.end : std::string_view();
        _output.put(_text);
        _isEnded = line.isWhole;
    }

    /// Ends a half line before the lines of another file.
    void endLine()
    {
        if (!_isEnded)
            _output.put("\n");
        _isEnded = true;
        _before.reset();
    }

private:
    enum Form : unsigned char
    {
        Date,
        Start,
        Before,
        Ticks
    };

    void putTime(LogSource const& source, LogLine const& line)
    {
        if (_isColoured)
            _text += faint;
        const std::optional<std::int64_t> time = _form == Ticks  ? std::nullopt
                                                 : _form == Date ? source.getTime(line)
                                                                 : source.getSinceStart(line);
        if (!time)
            _text += line.raw.substr(0, stampLength);
        else if (_form == Date)
            _time.putDate(_text, *time);
        else if (_form == Start)
            _time.putSeconds(_text, *time, false);
        else {
            // Of another run the difference means nothing.
            const bool isComparable = _before && _run == line.run;
            _time.putSeconds(_text, isComparable ? *time - *_before : 0, true);
            _before = time;
            _run = line.run;
        }
    }

    void putMessage(LogLine const& line)
    {
        const std::string_view rest = line.raw.substr(stampLength);
        if (!_isColoured) {
            putText(rest);
            return;
        }
        const std::string_view word = getLevelWord(line.level);
        _text += rest.substr(0, threadLength);
        _text += noColour;
        _text += levelColours[static_cast<std::size_t>(line.level)];
        _text += word;
        _text += noColour;
        putText(rest.substr(threadLength + word.size()));
    }

    void putOther(LogLine const& line)
    {
        const bool isBanner = _isColoured && line.kind != Kind::Plain && line.kind != Kind::Blank && !line.hasStamp;
        if (isBanner)
            _text += bold;
        putText(line.raw);
        if (isBanner)
            _text += noColour;
    }

    void putText(std::string_view text)
    {
        if (_isTerminal)
            putShown(_text, text);
        else
            _text += text;
    }

    Output& _output;
    TimeText _time;
    Form _form;
    bool _isTerminal, _isColoured;
    bool _isEnded = true;
    std::string _text;
    std::optional<std::int64_t> _before;  ///< time of the message shown before
    int _run = -1;                        ///< and its run
};

/// What -u tells.
struct Count
{
    std::uint64_t lines = 0, foreign = 0;
};

/// One line; false once nobody wants more.
bool handle(LogSource const& source, LogLine const& line, Filter& filter, Printer& printer, Count& count)
{
    if (line.isStart) {
        ++count.lines;
        count.foreign += line.kind == Kind::Plain ? 1u : 0u;
    }
    if (filter.isWanted(source, line))
        printer.print(source, line);
    return !(line.kind == Kind::Stopped && source.getOpenRunCount() == 0 && getSettings().quit.getValue());
}

void showAll(std::string const& name, Printer& printer, Output const& output, Count& count)
{
    ShowSettings const& settings = getSettings();
    LogSource source(name, settings.zones.getWritten());
    refuseOwnOutput(source);
    Filter filter(settings.filter, settings.zones.getShown());
    LogLine line;
    while (!output.isLeft() && source.next(line))
        handle(source, line, filter, printer, count);
    printer.endLine();
}

void followOne(std::string const& name, Printer& printer, Output& output, Count& count)
{
    ShowSettings const& settings = getSettings();
    // Before the first byte is read, so that no change is missed.
    FileWatch watch(name);
    LogSource source(name, settings.zones.getWritten());
    refuseOwnOutput(source);
    Filter filter(settings.filter, settings.zones.getShown());
    source.follow();
    LogLine line;
    for (;;) {
        while (source.next(line))
            if (!handle(source, line, filter, printer, count))
                return;
        output.flush();
        if (source.renew())
            watch.renew();
        else
            watch.wait();
    }
}
}  // namespace

Vn::InUsage getShowUsage()
{
    ShowSettings const& settings = getSettings();
    Vn::InUsage usage("Prints logs with dates in place of ticks, chosen lines alone, in colours.");
    usage.operands("[FILE]...");
    settings.filter.explain(usage);
    settings.zones.explain(usage);
    usage.expect(settings.time.getVariable(), "date, start, before or ticks", isTimeForm)
        .expect(settings.digits.getVariable(), "0 to 9 digits", isDigitCount)
        .expect(settings.colour.getVariable(), "always, never or auto", isColourForm)
        .note("Without a FILE, or where it is -, standard input is read. A date is that of the program's start, in "
              "whole "
              "seconds, and the ticks since then, so it is up to a second early. Lines without a date keep their "
              "ticks. "
              "Windows knows no zones by name, and has no pager.")
        .note("On a terminal the variable PAGER names the pager, else it is \"less -R\"; NO_COLOR switches colours "
              "off.");
    return usage;
}

int runShow(std::vector<std::string> const& operands)
{
    ShowSettings const& settings = getSettings();
    const std::vector<std::string> names = getNames(operands);
    const bool isFollowing = settings.follow.getValue() && names.front() != "-";
    if (isFollowing && names.size() > 1)
        throw WrongUse("-f follows one file, not " + std::to_string(names.size()));
    const bool isTerminal = Vn::OsTerminal::isStandardOutput();
    Output output;
    Printer printer(settings, output, isTerminal);
    if (isTerminal && !isFollowing && !settings.plain.getValue())
        output.startPager();
    Count count;
    if (isFollowing)
        followOne(names.front(), printer, output, count);
    else
        for (std::string const& name : names)
            showAll(name, printer, output, count);
    output.close();
    if (settings.count.getValue())
        warn(std::to_string(count.foreign) + " of " + std::to_string(count.lines) +
             " lines are not the logger's, or have no time stamp");
    return success;
}

}  // namespace vnlog
