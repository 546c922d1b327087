// Private to osprocesswindows.cpp.
#pragma once

#include <string>

namespace Vn
{

/// The line that Windows starts a process with. Null counts as an empty array.
///
///     {"convert", "a b.exr", null}  ->  "convert a b.exr "
///
// Intended: nothing is quoted, so a text with a blank in it splits. Do not mend: callers quote what needs it, and
// would get a second pair of quotes.
inline std::string commandLineOf(char const* const* argv)
{
    std::string line;
    for (; argv != nullptr && *argv != nullptr; ++argv) {
        line += *argv;
        line += ' ';
    }
    return line;
}

}  // namespace Vn
