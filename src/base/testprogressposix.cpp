// testprogressposix.cpp (Windows form: testprogresswindows.cpp)
#include <base/testprogress_p.h>

#include <unistd.h>

/// False for a pipe or a file, as in a build server.
bool Vn::System::isErrorStreamATerminal()
{
    return ::isatty(STDERR_FILENO) != 0;
}
