// Private to osterminal.cpp; implemented in osterminalposix.cpp and osterminalwindows.cpp.
#pragma once

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
int columnsOf(int terminal, char const* variable);

}  // namespace Vn
