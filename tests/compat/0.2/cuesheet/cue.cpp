#include "cue.h"

#include <base/dttimeutil.h>
#include <base/exbase.h>

#include <charconv>
#include <vector>

namespace CueSheet
{
namespace
{
constexpr char const* blanks = " \t\r";
constexpr std::size_t mostDecimals = 5;  // 10^5 is the largest rate

struct NamedRate
{
    char const* name;
    int numerator, denominator;
};

constexpr NamedRate namedRates[] = {
    {"film", 24, 1},         {"ntscfilm", 24000, 1001}, {"pal", 25, 1},      {"ntsc", 30000, 1001},
    {"ntsc60", 60000, 1001}, {"cd", 44100, 1},          {"audio", 48000, 1},
};

std::string trimmed(std::string const& text)
{
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string::npos)
        return "";
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::vector<std::string> split(std::string const& text, char separator)
{
    std::vector<std::string> parts(1);
    for (char character : text) {
        if (character == separator)
            parts.emplace_back();
        else
            parts.back() += character;
    }
    return parts;
}

/// Digits and nothing else, up to `limit`.
std::int64_t readDigits(std::string const& text, std::int64_t limit, char const* what)
{
    std::int64_t value = 0;
    char const* const end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, value);
    if (text.empty() || text[0] == '-' || result.ec == std::errc::invalid_argument || result.ptr != end)
        throw Unreadable(std::string(what) + " must be a whole number, not '" + text + "'");
    if (result.ec != std::errc() || value > limit)
        throw Unreadable(std::string(what) + " can't be above " + std::to_string(limit));
    return value;
}

Vn::DtTime readSeconds(std::string const& text)
{
    const std::vector<std::string> parts = split(text.substr(0, text.size() - 1), '.');
    if (parts.size() > 2 || (parts.size() == 2 && parts[1].empty()))
        throw Unreadable("'" + text + "' is no number of seconds");
    std::int64_t count = readDigits(parts[0], longestHours * 3600, "the seconds");
    int rate = 1;
    if (parts.size() == 2) {
        if (parts[1].size() > mostDecimals)
            throw Unreadable("seconds have five decimals at most");
        for (std::size_t i = 0; i < parts[1].size(); ++i)
            rate *= 10;
        count = count * rate + readDigits(parts[1], rate, "the decimals");
    }
    return Vn::DtTime(count, rate, 1);
}

Vn::DtTime readFrames(std::string const& text)
{
    const std::vector<std::string> sides = split(text, '@');
    if (sides.size() != 2)
        throw Unreadable("hours:minutes:seconds:frames need '@' and a rate");
    const std::vector<std::string> fields = split(trimmed(sides[0]), ':');
    if (fields.size() != 4)
        throw Unreadable("'" + trimmed(sides[0]) + "' isn't hours:minutes:seconds:frames");
    const Vn::Rational rate = readRate(trimmed(sides[1]));
    // Frames are numbered up to the next whole rate: 30 for 30000/1001.
    std::int64_t const perSecond = (rate.getNumerator() + rate.getDenominator() - 1) / rate.getDenominator();
    std::int64_t const hours = readDigits(fields[0], longestHours, "the hours");
    std::int64_t const minutes = readDigits(fields[1], 59, "the minutes");
    std::int64_t const seconds = readDigits(fields[2], 59, "the seconds");
    std::int64_t const frames = readDigits(fields[3], perSecond - 1, "the frames");
    return Vn::DtTime(((hours * 60 + minutes) * 60 + seconds) * perSecond + frames, rate);
}

Vn::DtTime readStored(std::string const& text)
{
    // The library takes a count without a number for 0; a user has mistyped it.
    if (text.find_first_of("0123456789") != (text[0] == '-' ? 1u : 0u))
        throw Unreadable("'" + text + "' is no time");
    try {
        return Vn::DtTimeUtil::getDtTimeFromDtString(text.c_str());
    } catch (Vn::ExBase const& failure) {
        throw Unreadable(failure.getReason());
    }
}

void checkLimits(Vn::DtTime const& time)
{
    Vn::Rational const& rate = time.getRate();
    if (rate.getNumerator() < 0 || rate.getNumerator() > largestRateTerm || rate.getDenominator() < 0 ||
        rate.getDenominator() > largestRateTerm)
        throw Unreadable("the terms of a rate must lie between 1 and " + std::to_string(largestRateTerm));
    std::int64_t const count = time.getCount();
    std::int64_t const limit = std::int64_t(longestHours) * 3600 * rate.getNumerator() / rate.getDenominator();
    if (count > limit || count < -limit)
        throw Unreadable("a sheet has " + std::to_string(longestHours) + " hours");
}
}  // namespace

Vn::Rational readRate(std::string const& text)
{
    for (NamedRate const& rate : namedRates) {
        if (text == rate.name)
            return Vn::Rational(rate.numerator, rate.denominator);
    }
    const std::vector<std::string> terms = split(text, '/');
    if (text.empty() || text.find_first_not_of("0123456789/") != std::string::npos || terms.size() > 2)
        throw Unreadable("'" + text + "' is no rate");
    const int numerator = static_cast<int>(readDigits(terms[0], largestRateTerm, "a rate's numerator"));
    const int denominator =
        terms.size() == 2 ? static_cast<int>(readDigits(terms[1], largestRateTerm, "a rate's denominator")) : 1;
    if (numerator == 0 || denominator == 0)
        throw Unreadable("a rate can't have a zero");
    return Vn::Rational(numerator, denominator);
}

bool holdsCue(std::string const& line)
{
    const std::string text = trimmed(line);
    return !text.empty() && text[0] != '#';
}

Cue readCue(std::string const& line)
{
    const std::size_t sign = line.find('=');
    const std::string time = trimmed(line.substr(0, sign));
    if (time.empty())
        throw Unreadable("there is no time in front of the name");
    Cue cue;
    if (time.find(':') != std::string::npos)
        cue.time = readFrames(time);
    else if (time.back() == 's')
        cue.time = readSeconds(time);
    else
        cue.time = readStored(time);
    checkLimits(cue.time);
    if (sign != std::string::npos)
        cue.name = trimmed(line.substr(sign + 1));
    return cue;
}

std::string describeRates()
{
    std::string text;
    for (NamedRate const& rate : namedRates) {
        text += std::string(text.empty() ? "" : ", ") + rate.name + " " + std::to_string(rate.numerator);
        if (rate.denominator != 1)
            text += "/" + std::to_string(rate.denominator);
    }
    return text;
}

}  // namespace CueSheet
