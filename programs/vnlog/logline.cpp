// Lines of a log, recognised by the bytes at fixed places.
//
// A stamped line begins with two numbers of ten digits (the halves of the ticks), a thread id and a level word:
//
//     0000000000 0000000005 (0x00001a2b) Warning: Net no answer
//     0          11         22           35
//
// Few lines of other programs have a digit, a blank and "(0x" at those places, so the places are looked at first, and the numbers
// are read once they fit. Whatever does not fit exactly is Plain: a line is never repaired.
#include "logline.h"

#include "decimal.h"

#include <array>
#include <charconv>
#include <limits>

namespace vnlog
{
namespace
{
constexpr std::string_view startBanner = "===== Message Logger Startup =====";
constexpr std::string_view stopBanner = "===== Message Logger Stopped =====";
constexpr std::string_view dateTitle = "===== Started on ";
constexpr std::string_view resolutionTitle = "===== Clock Frequency: ";
constexpr std::string_view overflowTitle = "Event overflow [";

constexpr std::size_t digits = 10;
constexpr std::size_t lowerHalf = 11;
constexpr std::size_t threadPart = 22;
constexpr std::size_t levelPart = 35;

constexpr int informational = 4;
constexpr int tracing = 5;
constexpr std::array<std::string_view, 7> levelWords = {"Internal Error", "Fatal Error", "Error",    "Warning",
                                                        "Informational",  "Tracing",     "Profiling"};

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// Ten digits of a number of 32 bits.
bool readHalf(char const* text, std::uint64_t& number)
{
    number = 0;
    for (std::size_t i = 0; i < digits; ++i) {
        const unsigned digit = static_cast<unsigned char>(text[i]) - unsigned{'0'};
        if (digit > 9)
            return false;
        number = 10 * number + digit;
    }
    return number <= std::numeric_limits<std::uint32_t>::max();
}

/// Eight digits of a hexadecimal number in lower case.
bool readThread(char const* text, std::uint32_t& number)
{
    number = 0;
    for (int i = 0; i < 8; ++i) {
        const char c = text[i];
        const bool isLetter = c >= 'a' && c <= 'f';
        if (!isLetter && !isDigit(c))
            return false;
        number = 16 * number + static_cast<std::uint32_t>(isLetter ? c - 'a' + 10 : c - '0');
    }
    return true;
}

/// The level whose word, a colon and a blank begin the text; -1 if none does. `length` is that of the three.
int readLevel(std::string_view text, std::size_t& length)
{
    for (std::size_t i = 0; i < levelWords.size(); ++i) {
        const std::string_view word = levelWords[i];
        if (!text.empty() && text[0] == word[0] && text.starts_with(word) &&
            text.substr(word.size()).starts_with(": ")) {
            length = word.size() + 2;
            return static_cast<int>(i);
        }
    }
    return -1;
}

bool readOverflow(std::string_view text, long& lost)
{
    if (!text.starts_with(overflowTitle) || !text.ends_with(']'))
        return false;
    const std::string_view number = text.substr(overflowTitle.size(), text.size() - overflowTitle.size() - 1);
    std::int32_t value = 0;
    const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), value);
    if (error != std::errc() || end != number.data() + number.size())
        return false;
    lost = value;
    return true;
}

/// Reads the stamp, the thread and the level. False if any of them is not there.
bool readPrefix(std::string_view raw, LogLine& line)
{
    if (raw.size() < levelPart || !isDigit(raw[0]) || raw[digits] != ' ' ||
        raw.substr(threadPart - 1, 4) != " (0x" || raw.substr(levelPart - 2, 2) != ") ")
        return false;
    std::uint64_t upper = 0, lower = 0;
    std::size_t length = 0;
    if (!readHalf(raw.data(), upper) || !readHalf(raw.data() + lowerHalf, lower) ||
        !readThread(raw.data() + threadPart + 3, line.thread))
        return false;
    line.level = readLevel(raw.substr(levelPart), length);
    if (line.level < 0)
        return false;
    line.ticks = upper << 32 | lower;
    line.text = raw.substr(levelPart + length);
    return true;
}

/// What the trace draws at the depth 0: a call's entry or exit, or a text, which no group has written.
bool isDrawing(std::string_view text)
{
    for (const std::string_view sign : {"+ ", "| ", ">>> ", "<<< "})
        if (text.starts_with(sign))
            return true;
    return false;
}

/// Divides the message at its first blank. A text that begins with a blank, or has none, has no group.
void divideText(LogLine& line)
{
    if (line.level == tracing && isDrawing(line.text))
        return;
    const std::size_t blank = line.text.find(' ');
    if (blank == 0 || blank == std::string_view::npos)
        return;
    line.group = line.text.substr(0, blank);
    line.text = line.text.substr(blank + 1);
}

void readBanner(std::string_view raw, LogLine& line)
{
    if (raw == startBanner)
        line.kind = Kind::Started;
    else if (raw == stopBanner)
        line.kind = Kind::Stopped;
    else if (raw.starts_with(dateTitle)) {
        line.kind = Kind::StartedOn;
        line.text = raw.substr(dateTitle.size());
    } else if (raw.starts_with(resolutionTitle)) {
        line.kind = Kind::ClockFrequency;
        line.text = raw.substr(resolutionTitle.size());
    }
}

/// `length` digits, blanks before them allowed; -1 if they are anything else.
int readNumber(std::string_view text)
{
    while (text.starts_with(' '))
        text.remove_prefix(1);
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() && isDigit(text[0]) ? number : -1;
}
}  // namespace

LogLine parseLine(std::string_view raw)
{
    LogLine line;
    line.raw = raw;
    if (readPrefix(raw, line)) {
        line.hasStamp = true;
        if (line.level == informational && readOverflow(line.text, line.lost)) {
            line.kind = Kind::Overflow;
            return line;
        }
        line.kind = Kind::Message;
        divideText(line);
        return line;
    }
    line.thread = 0;
    line.level = -1;
    line.text = raw;
    if (raw.starts_with("====="))
        readBanner(raw, line);
    else if (readOverflow(raw, line.lost)) {
        line.kind = Kind::Overflow;
        line.level = informational;
    }
    return line;
}

std::optional<Civil> parseDate(std::string_view text)
{
    constexpr std::string_view months = "JanFebMarAprMayJunJulAugSepOctNovDec";
    // "Sun Nov 22 17:17:56 2026"
    if (text.size() < 24 || text[3] != ' ' || text[7] != ' ' || text[10] != ' ' || text[13] != ':' ||
        text[16] != ':' || text[19] != ' ')
        return std::nullopt;
    const std::size_t month = months.find(text.substr(4, 3));
    if (month == std::string_view::npos || month % 3 != 0)
        return std::nullopt;
    const Civil date = {readNumber(text.substr(20)),    static_cast<int>(month / 3) + 1,
                        readNumber(text.substr(8, 2)),  readNumber(text.substr(11, 2)),
                        readNumber(text.substr(14, 2)), readNumber(text.substr(17, 2))};
    const bool isRight = date.year >= 0 && date.day >= 1 && date.day <= 31 && date.hour >= 0 && date.hour < 24 &&
                         date.minute >= 0 && date.minute < 60 && date.second >= 0 && date.second <= 60;
    return isRight ? std::optional(date) : std::nullopt;
}

std::optional<double> parseResolution(std::string_view text)
{
    double seconds = 0;
    const auto [end, error] = readDecimal(text.data(), text.data() + text.size(), seconds);
    const bool isRight = error == std::errc() && end == text.data() + text.size() && seconds > 0 &&
                         seconds <= std::numeric_limits<double>::max();
    return isRight ? std::optional(seconds) : std::nullopt;
}

std::string_view getLevelWord(int level)
{
    return level >= 0 && level < static_cast<int>(levelWords.size()) ? levelWords[static_cast<std::size_t>(level)]
                                                                     : std::string_view();
}

}  // namespace vnlog
