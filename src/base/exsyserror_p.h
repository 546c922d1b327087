// Private to exsyserror.cpp; implemented in exsyserrorposix.cpp and exsyserrorwindows.cpp.
#pragma once

#include <cstddef>
#include <cstring>

namespace Vn::System
{

/// The calling thread's last error of the operating system.
int getLastError();

/// Writes the system's text for `errorCode`, cut to fit and terminated; empty if the system has none.
void getErrorText(int errorCode, char* buffer, std::size_t size);

/// Cuts the line end off a system's text: each of the last two characters that is a carriage return or a line feed
/// becomes a terminator. Both are looked at, whatever the first of them is.
inline void cutLineEnd(char* text)
{
    const std::size_t length = std::strlen(text);
    for (std::size_t fromEnd = 1; fromEnd <= 2 && fromEnd <= length; ++fromEnd) {
        char& character = text[length - fromEnd];
        if (character == '\r' || character == '\n')
            character = '\0';
    }
}

}  // namespace Vn::System
