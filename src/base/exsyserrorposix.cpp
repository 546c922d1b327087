// exsyserrorposix.cpp (Windows form: exsyserrorwindows.cpp)
#include <base/exsyserror_p.h>

#include <cerrno>
#include <cstdio>

namespace Vn::System
{

/// There is one error number here, so both classes of system errors report the same.
int getLastError()
{
    return errno;
}

/// Cut to the buffer. The C library has a text for every number, unknown ones included.
void getErrorText(int errorCode, char* buffer, std::size_t size)
{
    std::snprintf(buffer, size, "%s", std::strerror(errorCode));
}

}  // namespace Vn::System
