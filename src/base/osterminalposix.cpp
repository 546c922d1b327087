// osterminalposix.cpp (Windows form: osterminalwindows.cpp)
#include <base/osterminal_p.h>

#include <sys/ioctl.h>
#include <unistd.h>

bool Vn::System::isTerminal(int stream)
{
    return ::isatty(stream) != 0;
}

/// Fails for what is no terminal. A terminal of unknown size, as a serial line, says 0.
int Vn::System::getTerminalColumns()
{
    ::winsize size = {};
    return ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}
