// Private to osprocesswindows.cpp.
#pragma once

#include <string>

namespace Vn
{

/// The line that Windows starts a process with: each text with a blank behind it, nothing quoted or escaped.
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
