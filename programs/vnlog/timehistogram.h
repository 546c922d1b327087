#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vnlog
{

/// Counts times in columns of one width, which doubles as often as it takes to have room for all of them. So memory is the same for
/// any span, and the result is the same in whatever order the times come, but for where the first column begins.
class TimeHistogram
{
public:
    /// So many columns, at least 2; the first width in nanoseconds.
    explicit TimeHistogram(std::size_t columns, std::int64_t width = 1000000);

    /// Nanoseconds from 0 to 4e18, in the year 2096; others count as the nearest of these.
    void add(std::int64_t time);

    std::int64_t getWidth() const { return _width; }
    std::int64_t getBegin() const;  ///< of the first column that has a count; 0 if none has

    /// The counts from there to the last column that has one.
    std::vector<std::uint64_t> getCounts() const;

private:
    void widen(std::int64_t time);

    std::vector<std::uint64_t> _counts;
    std::int64_t _width;
    std::int64_t _begin = 0;  ///< a multiple of the width
    bool _isEmpty = true;
};

/// The counts as columns of so many lines, the highest line first. A count above 0 is never drawn as nothing.
///
///     {1, 2, 4} in 1 line          ->  "▂▄█"
///     {1, 2, 4} in 1 line, ASCII   ->  ".:#"
///
std::vector<std::string> drawColumns(std::vector<std::uint64_t> const& counts, int lines, bool isAscii);

}  // namespace vnlog
