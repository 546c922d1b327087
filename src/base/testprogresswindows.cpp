// testprogresswindows.cpp (Linux form: testprogressposix.cpp)
#include <base/testprogress_p.h>

#include <io.h>
#include <stdio.h>

/// False for a pipe or a file, as in a build server.
bool Vn::System::isErrorStreamATerminal()
{
    return ::_isatty(::_fileno(stderr)) != 0;
}
