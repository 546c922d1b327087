// exsyserrorwindows.cpp (Linux form: exsyserrorposix.cpp)
#include <base/exsyserror_p.h>

#include <windows.h>

namespace Vn::System
{

/// The calling thread's, which nearly every call of the system changes.
int getLastError()
{
    return static_cast<int>(::GetLastError());
}

void getErrorText(int errorCode, char* buffer, std::size_t size)
{
    // The call leaves the buffer alone when it has no text, or one that doesn't fit.
    buffer[0] = '\0';
    ::FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, static_cast<DWORD>(errorCode), 0, buffer,
                     static_cast<DWORD>(size), nullptr);
}

}  // namespace Vn::System
