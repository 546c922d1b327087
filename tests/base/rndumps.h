#pragma once

#include <algorithm>
#include <ostream>
#include <sstream>
#include <string>

namespace VnTest
{

struct DumpRow
{
    char const* name;
    char const* text;
};

inline constexpr DumpRow dumpRows[] = {
#include "../reference/histogramdumps.inc"
};

/// The reckoned text of a dump, such as "float line scene".
template <class T>
std::string reckonedDump(std::string const& what)
{
    const std::string name = (sizeof(T) == sizeof(float) ? "float " : "double ") + what;
    for (DumpRow const& row : dumpRows)
        if (name == row.name)
            return row.text;
    return "no such dump";
}

template <class Histogram>
std::string dumpOf(Histogram const& histogram)
{
    std::ostringstream stream;
    histogram.dump(stream);
    return stream.str();
}

template <class Histogram>
std::string sceneOf(Histogram const& histogram)
{
    std::ostringstream stream;
    histogram.dumpInventor(stream);
    return stream.str();
}

/// Counts how often it is flushed.
class FlushedBuffer : public std::stringbuf
{
public:
    int flushes = 0;

protected:
    int sync() override
    {
        ++flushes;
        return std::stringbuf::sync();
    }
};

/// Whether each line of both dumps ends with a flush, as std::endl has it, and with nothing after the last.
template <class Histogram>
bool flushesEachLine(Histogram const& histogram)
{
    FlushedBuffer buffer;
    std::ostream stream(&buffer);
    histogram.dump(stream);
    histogram.dumpInventor(stream);
    const std::string text = buffer.str();
    return buffer.flushes == std::count(text.begin(), text.end(), '\n') && text.back() == '\n';
}

}  // namespace VnTest
