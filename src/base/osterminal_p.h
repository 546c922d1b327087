// Private to osterminal.cpp; implemented in osterminalposix.cpp and osterminalwindows.cpp.
#pragma once

#include <charconv>
#include <cstring>
#include <system_error>

namespace Vn::System
{

/// Whether the standard stream of that number (1 output, 2 error) is a terminal.
bool isTerminal(int stream);

/// Columns of the terminal that standard output is; 0 if it is none, or doesn't tell.
int getTerminalColumns();

}  // namespace Vn::System

namespace Vn
{

/// The rule of OsTerminal::getColumns(): `terminal` if it isn't 0, else the number in `variable`, which may be null,
/// else 80.
inline int columnsOf(int terminal, char const* variable)
{
    constexpr int usual = 80;
    if (terminal > 0)
        return terminal;
    if (variable == nullptr)
        return usual;
    int columns = 0;
    char const* const end = variable + std::strlen(variable);
    const std::from_chars_result result = std::from_chars(variable, end, columns);
    return result.ec == std::errc() && result.ptr == end && columns > 0 ? columns : usual;
}

}  // namespace Vn
