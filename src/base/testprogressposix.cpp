// testprogressposix.cpp (Windows form: testprogresswindows.cpp)
#include <base/testprogress_p.h>

#include <unistd.h>

bool Vn::System::isErrorStreamATerminal()
{
    return ::isatty(STDERR_FILENO) != 0;
}
