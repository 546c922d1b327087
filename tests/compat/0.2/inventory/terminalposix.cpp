// terminalposix.cpp (Windows form: terminalwindows.cpp)
#include "terminal.h"

#include <unistd.h>

bool Inventory::isErrorStreamATerminal()
{
    return ::isatty(STDERR_FILENO) != 0;
}
