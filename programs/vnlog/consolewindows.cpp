// consolewindows.cpp (POSIX form: consoleposix.cpp)
//
// Windows has no pager that reads a pipe and knows colours; the console scrolls.
#include "console.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <io.h>
#include <windows.h>

namespace vnlog
{
const bool hasPagers = false;
char const* const usualPager = "";

namespace
{
int lastError = 0;
}

bool isInputTerminal()
{
    return ::_isatty(0) != 0;
}

bool isUtf8()
{
    return ::GetConsoleOutputCP() == CP_UTF8;
}

void setBinary()
{
    ::_setmode(1, _O_BINARY);
}

bool writeOutput(std::string_view text, bool& isLeft)
{
    isLeft = false;
    if (std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0)
        return true;
    lastError = errno;
    return false;
}

std::string getReason()
{
    return std::strerror(lastError);
}

bool openPager(std::string const&)
{
    return false;
}

void awaitPager() {}

}  // namespace vnlog
