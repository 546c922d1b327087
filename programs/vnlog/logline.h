#pragma once

#include <cstdint>
#include <ctime>
#include <optional>
#include <string_view>

namespace vnlog
{

/// What a line of a log is.
enum class Kind : unsigned char
{
    Message,         ///< a logged message, with time stamp, thread and level
    Overflow,        ///< "Event overflow [N]": messages were lost here; with a stamp or without one
    Started,         ///< the first line of a start banner
    StartedOn,       ///< the date in a start banner
    ClockFrequency,  ///< the resolution of the clock in a start banner
    Stopped,         ///< the stop banner
    Blank,           ///< the empty line behind the date of a start banner; LogSource tells it, parseLine() cannot
    Plain            ///< no line of the logger, or a message without a time stamp
};

/// A line of a log, as parseLine() reads it and LogSource completes it. Views point into the text that was parsed; those of a
/// LogSource hold until its next call.
struct LogLine
{
    std::string_view raw;      ///< the line without its line end, whatever its bytes
    std::string_view end;      ///< "\n", "\r\n", or "" where none has come yet
    Kind kind = Kind::Plain;   ///< decided on the first piece of a line
    bool isWhole = false;      ///< false: a half line at the end, or a piece of a longer line
    bool isStart = true;       ///< false: a further piece of a line that is longer than LogSource::longestPiece
    bool hasStamp = false;     ///< whether `ticks` and `thread` are there
    std::uint64_t ticks = 0;   ///< of the hardware counter, since the start of its process
    std::uint32_t thread = 0;  ///< the thread's id
    int level = -1;            ///< a Vn::LgTypes::Level; -1 if there is none
    std::string_view group;    ///< the word before the first blank of the message; "" if there is none
    std::string_view text;     ///< what stands behind that blank; all of an overflow, date or plain line
    long lost = 0;             ///< messages that an overflow counts
    std::uint64_t number = 0;  ///< of the line in its file, from 1
    int run = -1;              ///< of the start of a process, from 0; -1 before the first start banner
};

/// One start of a process, as its banner tells it.
struct Run
{
    std::optional<std::time_t>
        started;                   ///< second of the start; none without a date, or with one that cannot be read
    double resolution = 0;         ///< seconds per tick; 0 if unknown
    std::int64_t nanoseconds = 0;  ///< the same in nanoseconds per tick, which the banner prints exactly
    bool hasStamps = false;        ///< whether the banner has a date and a resolution
    bool isStopped = false;        ///< whether its stop banner has come
};

/// A date and a time of day as the writer's clock on the wall showed them.
struct Civil
{
    int year, month, day;  ///< month and day from 1
    int hour, minute, second;

    bool operator==(Civil const&) const = default;
};

/// Reads a line without its line end. Allocates nothing, throws nothing; any bytes are valid.
///
///     "0000000000 0000000005 (0x00001a2b) Warning: Net no answer"  ->  Message: 5 ticks, thread 0x1a2b, Warning, "Net",
///                                                                      "no answer"
///     "0000000000 0000000005 (0x00001a2b) Tracing:   | text"       ->  Message with group "" and text "  | text"
///     "0000000000 0000000005 (0x00001a2b) Tracing: + scan"      ->  Message with group "" and text "+ scan"
///     "Event overflow [3]"                                         ->  Overflow of 3, no stamp
///     "Net no answer"                                              ->  Plain: a message without a stamp looks like any text
///
/// A message at the level Informational whose whole text is "Event overflow [N]" cannot be told from an overflow, and counts as
/// one.
LogLine parseLine(std::string_view raw);

/// The date of a StartedOn line, as the C library's ctime() writes it; nothing for any other text.
///
///     "Sun Nov 22 17:17:56 2026"  ->  2026-11-22 17:17:56
///     "Sun Nov  2 07:17:56 2026"  and  "Sun Nov 02 07:17:56 2026"  ->  the second
std::optional<Civil> parseDate(std::string_view text);

/// The seconds per tick of a ClockFrequency line; nothing unless it is a positive number.
std::optional<double> parseResolution(std::string_view text);

/// The word of a level in a line, for 0 to 6; "" for any other number.
std::string_view getLevelWord(int level);

}  // namespace vnlog
