#pragma once

#include "logsource.h"
#include "pattern.h"
#include "settings.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vnlog
{

/// The options that choose lines; commands that have them share their letters.
struct FilterSettings
{
    Setting<char const*> threshold{
        "level", "l:", "-l LEVEL: only messages of LEVEL and of all that are more severe; Profiling has no others",
        nullptr, "",   "all"};
    Setting<char const*> levels{"levels", "L:", "-L LEVEL,...: only messages of these levels", nullptr, "", "all"};
    Setting<char const*> groups{"groups", "g:", "-g GROUP,...: only messages of these groups; * and ? in a name",
                                nullptr,  "",   "all"};
    Setting<char const*> threads{"threads", "t:", "-t THREAD,...: only messages of these threads, as 0x1a2b",
                                 nullptr,   "",   "all"};
    Setting<char const*> after{"after", "a:", "-a TIME: only messages at this time or later", nullptr, "", "all"};
    Setting<char const*> before{"before", "b:", "-b TIME: only messages before this time", nullptr, "", "all"};
    Setting<char const*> text{"text", "m:", "-m TEXT: only messages that hold this text", nullptr, "", "all"};
    Setting<char const*> expression{
        "expression", "e:", "-e REGEX: only messages that match this extended regular expression",
        nullptr,      "",   "all"};
    Setting<bool> ignoresCase{"case", "i", "-i: upper and lower case are the same for -m and -e", nullptr, "false"};
    Setting<char const*> foreign{
        "foreign",
        "x:", "-x WHICH: lines that the logger did not write: with (the message before them), keep, drop", nullptr,
        "with"};

    /// Makes the demands on all of them, and notes about times.
    void explain(Vn::InUsage& usage) const;
};

/// An end of a time span, as the options -a and -b take it.
struct TimeLimit
{
    enum Form : unsigned char
    {
        Date,        ///< nanoseconds since 1970 UTC
        SinceStart,  ///< nanoseconds since the start of the line's run
        TimeOfDay    ///< nanoseconds since midnight of the day on which the line's run started
    };

    Form form;
    std::int64_t nanoseconds;

    bool operator==(TimeLimit const&) const = default;
};

/// A time as people give it; nothing for any other text.
///
///     "2026-11-22", "2026-11-22 17:18", "2026-11-22T17:18:19.5"  ->  Date, in that zone
///     "17:18", "17:18:19.5"                                      ->  TimeOfDay
///     "+12.5"                                                    ->  SinceStart, in seconds
///
std::optional<TimeLimit> parseTime(std::string const& text, Zone const& zone);

/// The level that a word means, with or without " Error" and in upper or lower case; -1 if there is none.
int parseLevel(std::string const& word);

/// Whether a name is what the pattern says: * stands for any characters, ? for one.
bool isLike(std::string_view name, std::string_view pattern);

/// Decides which lines are wanted.
///
/// A message is decided by itself, and what has no stamp goes with the message before it, as the further lines of a message of
/// several lines do. In a log without stamps, and before the first message, such a line stands alone: its text decides, and for
/// the group its first word. Banners are not wanted while anything is chosen.
///
/// For the lines of one source, in their order. One thread.
class Filter
{
public:
    /// Throws std::runtime_error for settings that FilterSettings::explain() refuses.
    Filter(FilterSettings const& settings, Zone zone);

    /// Whether anything is chosen at all; else every line is wanted but for -x drop.
    bool isChoosing() const { return _isChoosing; }

    bool isWanted(LogSource const& source, LogLine const& line);

private:
    bool isOtherWanted(LogLine const& line);
    bool isMessageWanted(LogSource const& source, LogLine const& line) const;
    bool isAloneWanted(LogLine const& line) const;
    bool isGroupWanted(std::string_view group) const;
    bool isTextWanted(std::string_view text) const;
    bool isTimeWanted(LogSource const& source, LogLine const& line) const;
    std::optional<std::int64_t> getLimit(TimeLimit const& limit, LogSource const& source,
                                         LogLine const& line) const;

    enum class Foreign : unsigned char
    {
        With,
        Keep,
        Drop
    };

    Zone _zone;
    unsigned _levels = ~0u;  ///< a bit for each level
    std::vector<std::string> _groups;
    std::vector<std::uint32_t> _threads;
    std::optional<TimeLimit> _after, _before;
    std::string _text;
    std::unique_ptr<Pattern> _pattern;
    std::unique_ptr<Pattern> _plainPattern;  ///< of the text, where case is ignored
    Foreign _foreign = Foreign::With;
    bool _isChoosing = false;
    bool _isLastWanted = true;     ///< what was decided for the last line, and holds for its further pieces
    bool _isMessageWanted = true;  ///< what was decided for the last line with a stamp
    bool _isMessageOpen = false;   ///< whether lines without a stamp continue that one
};

}  // namespace vnlog
