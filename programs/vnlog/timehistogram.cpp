#include "timehistogram.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace vnlog
{
namespace
{
/// Cells by how many eighths of them are filled.
constexpr std::array<std::string_view, 9> blocks = {" ",      "\u2581", "\u2582", "\u2583", "\u2584",
                                                    "\u2585", "\u2586", "\u2587", "\u2588"};
constexpr std::array<std::string_view, 9> characters = {" ", ".", ".", ":", ":", "+", "+", "#", "#"};

/// Twice that is still a number: the columns may span as much.
constexpr std::int64_t mostTime = 4000000000000000000;

std::int64_t flooredTo(std::int64_t time, std::int64_t width)
{
    const std::int64_t rest = time % width;
    return time - (rest < 0 ? rest + width : rest);
}
}  // namespace

TimeHistogram::TimeHistogram(std::size_t columns, std::int64_t width)
    : _counts(std::max<std::size_t>(columns, 2)), _width(width)
{}

void TimeHistogram::add(std::int64_t time)
{
    time = std::clamp(time, std::int64_t{0}, mostTime);
    if (_isEmpty) {
        _begin = flooredTo(time, _width);
        _isEmpty = false;
    }
    widen(time);
    ++_counts[static_cast<std::size_t>((time - _begin) / _width)];
}

/// Doubles the width until the time has a column. Columns are moved to the right for a time before the first one.
void TimeHistogram::widen(std::int64_t time)
{
    const auto count = static_cast<std::int64_t>(_counts.size());
    // What all columns span is at most four times the largest time, which is more than a signed number takes.
    while (time < _begin || static_cast<std::uint64_t>(time - _begin) >=
                                static_cast<std::uint64_t>(_width) * static_cast<std::uint64_t>(count)) {
        const std::int64_t width = 2 * _width;
        const std::int64_t begin = flooredTo(std::min(_begin, time), width);
        std::vector<std::uint64_t> counts(_counts.size());
        bool isWideEnough = true;
        for (std::size_t i = 0; i < _counts.size() && isWideEnough; ++i) {
            if (_counts[i] == 0)
                continue;
            const std::int64_t column = (_begin + static_cast<std::int64_t>(i) * _width - begin) / width;
            isWideEnough = column < count;
            if (isWideEnough)
                counts[static_cast<std::size_t>(column)] += _counts[i];
        }
        // With the early time in the first column, what is there finds no room: double around the present place first.
        if (!isWideEnough) {
            const std::int64_t own = flooredTo(_begin, width);
            std::fill(counts.begin(), counts.end(), 0);
            for (std::size_t i = 0; i < _counts.size(); ++i)
                if (_counts[i] != 0)
                    counts[static_cast<std::size_t>((_begin + static_cast<std::int64_t>(i) * _width - own) /
                                                    width)] += _counts[i];
            _begin = own;
        } else
            _begin = begin;
        _counts = counts;
        _width = width;
    }
}

std::int64_t TimeHistogram::getBegin() const
{
    const auto first = std::find_if(_counts.begin(), _counts.end(), [](std::uint64_t count) { return count != 0; });
    return first != _counts.end() ? _begin + (first - _counts.begin()) * _width : 0;
}

std::vector<std::uint64_t> TimeHistogram::getCounts() const
{
    const auto isFilled = [](std::uint64_t count) { return count != 0; };
    const auto first = std::find_if(_counts.begin(), _counts.end(), isFilled);
    const auto last = std::find_if(_counts.rbegin(), _counts.rend(), isFilled).base();
    return first < last ? std::vector<std::uint64_t>(first, last) : std::vector<std::uint64_t>();
}

std::vector<std::string> drawColumns(std::vector<std::uint64_t> const& counts, int lines, bool isAscii)
{
    const std::uint64_t most = counts.empty() ? 0 : *std::max_element(counts.begin(), counts.end());
    std::vector<std::string> drawing(static_cast<std::size_t>(lines));
    for (const std::uint64_t count : counts) {
        const double part = most != 0 ? static_cast<double>(count) / static_cast<double>(most) : 0;
        const int eighths = count != 0 ? std::max(1, static_cast<int>(part * 8 * lines)) : 0;
        for (int line = 0; line < lines; ++line) {
            const int filled = std::clamp(eighths - 8 * (lines - 1 - line), 0, 8);
            drawing[static_cast<std::size_t>(line)] +=
                (isAscii ? characters : blocks)[static_cast<std::size_t>(filled)];
        }
    }
    return drawing;
}

}  // namespace vnlog
