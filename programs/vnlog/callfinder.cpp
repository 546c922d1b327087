#include "callfinder.h"

#include <algorithm>

namespace vnlog
{
void CallFinder::addLine(std::uint64_t index, TraceLine const& line)
{
    if (line.step == TraceStep::Enter)
        enter(index, line);
    else if (line.step == TraceStep::Leave)
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
    _open.push_back({_calls.size(), line.depth, line.depth < 0 ? std::string(line.text) : std::string()});
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
        return line.depth >= 0 ? open.depth == line.depth - 1 : open.depth < 0 && open.name == line.text;
    };
    const auto found = std::find_if(_open.rbegin(), _open.rend(), isIts);
    return found == _open.rend() ? _open.size() : static_cast<std::size_t>(_open.rend() - found) - 1;
}

}  // namespace vnlog
