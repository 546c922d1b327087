// terminalwindows.cpp (Linux form: terminalposix.cpp)
#include "terminal.h"

#include <io.h>
#include <stdio.h>

bool Inventory::isErrorStreamATerminal()
{
    return ::_isatty(::_fileno(stderr)) != 0;
}
