// How a line is read: ahead of the drawing may stand the process id (a field of 10) and the source with its line, "name (  12) ".
// The drawing is an indentation of two characters for each open call, "  | | " for three, and a mark: "+ ", "| " or "/". Each
// place where the drawing may begin is tried, the one behind the fewest fields first: texts may hold what looks like a field.
#include "tracecalls.h"

#include <algorithm>

namespace vnlog
{
namespace
{
bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// Length of the process id's field, or 0 if there is none.
std::size_t pidLength(std::string_view text)
{
    constexpr std::size_t width = 10;
    if (text.size() < width)
        return 0;
    const auto digits =
        static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), isDigit) - text.begin());
    if (digits == 0 || digits >= width || text.substr(digits, width - digits).find_first_not_of(' ') != text.npos)
        return 0;
    return width;
}

/// Where the field of source and line, "main.cpp             (  12) ", ends; 0 if there is none. The line's number takes four
/// characters at least. The first such place counts: a text may hold the like.
std::size_t sourceEnd(std::string_view text)
{
    for (std::size_t at = text.find(" ("); at != text.npos; at = text.find(" (", at + 1)) {
        const std::size_t number = at + 2;
        std::size_t end = std::min(text.find_first_not_of(' ', number), text.size());
        while (end < text.size() && isDigit(text[end]))
            ++end;
        if (end - number >= 4 && isDigit(text[end - 1]) && text.substr(end, 2) == ") ")
            return end + 2;
    }
    return 0;
}

/// What stands behind an indentation, if it is a mark with what belongs to it.
TraceLine readMark(std::string_view text, int depth)
{
    if (text == "/" && depth > 0)
        return {TraceLine::Kind::Left, depth, {}};
    if (text.size() > 2 && text.substr(0, 2) == "+ ")
        return {TraceLine::Kind::Entered, depth, text.substr(2)};
    if (text.substr(0, 2) == "| ")
        return {TraceLine::Kind::Text, depth, text.substr(2)};
    return {};
}

TraceLine readDrawing(std::string_view text, int openCalls)
{
    if (text.size() > 4 && text.substr(0, 4) == ">>> ")
        return {TraceLine::Kind::Entered, -1, text.substr(4)};
    if (text.size() > 4 && text.substr(0, 4) == "<<< ")
        return {TraceLine::Kind::Left, -1, text.substr(4)};
    TraceLine deepest;
    for (int depth = 0;; ++depth) {
        const TraceLine line = readMark(text, depth);
        if (line.kind != TraceLine::Kind::Other) {
            deepest = line;
            if (depth == openCalls)
                return deepest;
        }
        if (text.substr(0, 2) != (depth == 0 ? "  " : "| "))
            return deepest;
        text.remove_prefix(2);
    }
}
}  // namespace

TraceLine parseTraceLine(std::string_view text, int openCalls)
{
    const std::size_t pid = pidLength(text);
    const std::size_t source = sourceEnd(text.substr(pid));
    for (const std::size_t start : {std::size_t(0), pid, pid + source}) {
        const TraceLine line = readDrawing(text.substr(start), openCalls);
        if (line.kind != TraceLine::Kind::Other)
            return line;
    }
    return {};
}

void CallFinder::addLine(std::uint64_t index, TraceLine const& line)
{
    if (line.kind == TraceLine::Kind::Entered)
        enter(index, line);
    else if (line.kind == TraceLine::Kind::Left)
        leave(index, line);
}

void CallFinder::addLoss()
{
    _isLossy = !_open.empty();
}

void CallFinder::enter(std::uint64_t index, TraceLine const& line)
{
    if (_isLossy && line.depth >= 0) {
        const auto isAround = [&line](Open const& open) { return open.depth < line.depth; };
        const auto first = std::find_if_not(_open.begin(), _open.end(), isAround);
        cutTo(static_cast<std::size_t>(first - _open.begin()), index);
    }
    _open.push_back({_calls.size(), line.depth, line.depth < 0 ? std::string(line.name) : std::string()});
    _calls.push_back({index, none, static_cast<int>(_open.size()) - 1, false});
}

void CallFinder::leave(std::uint64_t index, TraceLine const& line)
{
    const std::size_t ended = findLeft(line);
    if (ended == _open.size()) {
        ++_unmatched;
        return;
    }
    cutTo(ended + 1, index);
    _calls[_open.back().call].left = index;
    _open.pop_back();
    _isLossy = _isLossy && !_open.empty();
}

/// Ends the innermost calls, of which more than `count` are open.
void CallFinder::cutTo(std::size_t count, std::uint64_t index)
{
    for (; _open.size() > count; _open.pop_back()) {
        _calls[_open.back().call].left = index;
        _calls[_open.back().call].isCut = true;
    }
    _isLossy = _isLossy && !_open.empty();
}

/// Index of the open call that the line ends; their number if there is none.
std::size_t CallFinder::findLeft(TraceLine const& line) const
{
    if (_open.empty())
        return 0;
    if (line.depth >= 0 && !_isLossy)
        return _open.size() - 1;
    // An end is drawn at the depth within the call, one more than that of its beginning.
    const auto isIts = [&line](Open const& open) {
        return line.depth >= 0 ? open.depth == line.depth - 1 : open.depth < 0 && open.name == line.name;
    };
    const auto found = std::find_if(_open.rbegin(), _open.rend(), isIts);
    return found == _open.rend() ? _open.size() : static_cast<std::size_t>(_open.rend() - found) - 1;
}

}  // namespace vnlog
