// The drawings of the trace layer, read back.
//
// A call is drawn as "+ name" at its caller's depth, its texts as "| text" and its exit as "/" at its own depth. Depth 1 is
// indented by two blanks, each further one by "| ". So a bar may be indentation or the mark of a text: "  | + f" is the entry
// of f inside two calls, or the text "+ f" inside one. How many calls are open decides; behind lost messages, where that
// isn't known, the entry or exit is the likelier reading.
//
// In front of the drawing stand, if the options ask for it, the process id in a field of 10 and the place in the source: a
// name, padded to a field, and the line as " (  78) ".
#include "tracecalls.h"

#include <algorithm>
#include <optional>

namespace vnlog
{
namespace
{
constexpr std::string_view bar = "| ";
constexpr std::string_view enterMark = "+ ";
constexpr std::string_view leaveMark = "/";
constexpr std::string_view plainEnterMark = ">>> ";
constexpr std::string_view plainLeaveMark = "<<< ";
constexpr std::size_t processWidth = 10;

/// Deeper drawings count as messages: a line of bars is no call stack.
constexpr int deepest = 4096;

bool isDigit(char character)
{
    return character >= '0' && character <= '9';
}

TraceLine makeLine(TraceStep step, int depth, std::string_view text)
{
    TraceLine line;
    line.step = step;
    line.depth = depth;
    line.text = text;
    return line;
}

/// A line of the outermost depth, or one without indentation.
TraceLine parseUnindented(std::string_view drawing)
{
    const struct
    {
        std::string_view mark;
        TraceStep step;
        int depth;
    } forms[] = {
        {enterMark, TraceStep::Enter, 0},
        {bar, TraceStep::Text, 0},
        {plainEnterMark, TraceStep::Enter, TraceLine::notDrawn},
        {plainLeaveMark, TraceStep::Leave, TraceLine::notDrawn},
    };
    for (auto const& form : forms)
        if (drawing.starts_with(form.mark) && (form.step == TraceStep::Text || drawing.size() > form.mark.size()))
            return makeLine(form.step, form.depth, drawing.substr(form.mark.size()));
    return makeLine(TraceStep::None, TraceLine::notDrawn, drawing);
}

/// Without what stands in front of a drawing.
TraceLine parseDrawing(std::string_view drawing, int open, bool isSure)
{
    if (!drawing.starts_with("  "))
        return parseUnindented(drawing);
    int bars = 0;
    std::string_view rest = drawing.substr(2);
    for (; rest.starts_with(bar) && bars < deepest; ++bars)
        rest.remove_prefix(bar.size());

    const int innermost = bars + 1;
    const bool isEnter = rest.starts_with(enterMark) && rest.size() > enterMark.size();
    const bool isStep = isEnter || rest == leaveMark;
    const bool fitsText = open >= 1 && open <= bars;
    if (isStep && (!fitsText || !isSure))
        return makeLine(isEnter ? TraceStep::Enter : TraceStep::Leave, innermost,
                        isEnter ? rest.substr(enterMark.size()) : std::string_view());
    if (bars == 0 || rest.starts_with(bar))
        return makeLine(TraceStep::None, TraceLine::notDrawn, drawing);
    const int depth = fitsText ? open : bars;
    return makeLine(TraceStep::Text, depth, drawing.substr(2 + bar.size() * static_cast<std::size_t>(depth)));
}

/// The process id with its field, or nothing.
std::string_view findProcess(std::string_view message)
{
    if (message.size() < processWidth || !isDigit(message.front()) || message[processWidth - 1] != ' ')
        return {};
    const std::string_view field = message.substr(0, processWidth);
    const std::size_t digits = static_cast<std::size_t>(std::ranges::find_if_not(field, isDigit) - field.begin());
    return field.find_first_not_of(' ', digits) == std::string_view::npos ? field.substr(0, digits)
                                                                          : std::string_view();
}

struct Place
{
    std::string_view file;
    int line;
    std::string_view rest;  ///< what follows it
};

/// A number as std::setw(4) writes it, then ") "; `text` begins behind the opening parenthesis.
std::optional<Place> parsePlace(std::string_view file, std::string_view text)
{
    constexpr std::size_t width = 4, mostDigits = 9;
    const std::size_t first = std::min(text.find_first_not_of(' '), text.size());
    std::size_t end = first;
    int line = 0;
    for (; end < text.size() && end - first < mostDigits && isDigit(text[end]); ++end)
        line = line * 10 + (text[end] - '0');
    const bool isPadded = end == width || (first == 0 && end > width);
    if (end == first || !isPadded || !text.substr(end).starts_with(") "))
        return std::nullopt;
    file = file.substr(0, file.find_last_not_of(' ') + 1);
    return Place{file, line, text.substr(end + 2)};
}

/// The first place in the source that `message` holds.
std::optional<Place> findPlace(std::string_view message)
{
    for (std::size_t at = message.find(" ("); at != std::string_view::npos; at = message.find(" (", at + 1))
        if (const auto place = parsePlace(message.substr(0, at), message.substr(at + 2)))
            return place;
    return std::nullopt;
}

/// A drawing with or without a place in front. A message may hold what looks like a place: unless a drawing follows, only a
/// name without blanks counts as a file's.
TraceLine parseLocated(std::string_view located, int open, bool isSure)
{
    const TraceLine plain = parseDrawing(located, open, isSure);
    if (plain.step != TraceStep::None)
        return plain;
    const auto place = findPlace(located);
    if (!place)
        return plain;
    TraceLine line = parseDrawing(place->rest, open, isSure);
    if (line.step == TraceStep::None) {
        if (place->file.find(' ') != std::string_view::npos)
            return plain;
        line.step = TraceStep::Text;
    }
    line.file = place->file;
    line.line = place->line;
    return line;
}
}  // namespace

TraceLine parseTraceLine(std::string_view message, int open, bool isSure)
{
    TraceLine line = parseDrawing(message, open, isSure);
    if (line.step != TraceStep::None)
        return line;
    const std::string_view process = findProcess(message);
    const std::string_view located = process.empty() ? message : message.substr(processWidth);
    line = parseLocated(located, open, isSure);
    // The field of a process id is the trace's own, whatever follows it.
    if (line.step == TraceStep::None && !process.empty())
        line.step = TraceStep::Text;
    line.process = process;
    return line;
}

TraceCalls::Change TraceCalls::take(std::string_view message)
{
    const TraceLine line = parseTraceLine(message, static_cast<int>(_open.size()), _isSure);
    if (line.step == TraceStep::None)
        return {line, 0, 0};
    if (line.step == TraceStep::Leave && line.depth == TraceLine::notDrawn)
        return leaveByName(line);

    Change change{line, 0, 0};
    if (line.depth != TraceLine::notDrawn) {
        const std::size_t depth = static_cast<std::size_t>(line.depth);
        change.ended = _open.size() - std::min(_open.size(), depth);
        change.unseen = depth - std::min(_open.size(), depth);
        _open.resize(depth);
        _isSure = true;
    }
    if (line.step == TraceStep::Enter)
        _open.emplace_back(line.text);
    else if (line.step == TraceStep::Leave)
        _open.pop_back();
    return change;
}

/// Without indentation the name alone tells which call ends: the innermost one that bears it.
TraceCalls::Change TraceCalls::leaveByName(TraceLine const& line)
{
    const auto found = std::find(_open.rbegin(), _open.rend(), line.text);
    if (found == _open.rend())
        return {line, 0, 1};
    const std::size_t ended = static_cast<std::size_t>(found - _open.rbegin());
    _open.resize(_open.size() - ended - 1);
    return {line, ended, 0};
}

}  // namespace vnlog
