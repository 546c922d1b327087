// exsyserrorposix.cpp (Windows form: exsyserrorwindows.cpp)
#include <base/exsyserror_p.h>

#include <cerrno>
#include <cstdio>

namespace Vn::System
{

int getLastError()
{
    return errno;
}

void getErrorText(int errorCode, char* buffer, std::size_t size)
{
    std::snprintf(buffer, size, "%s", std::strerror(errorCode));
}

}  // namespace Vn::System
