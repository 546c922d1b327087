#pragma once

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

}  // namespace VnTest
