// osterminalwindows.cpp (Linux form: osterminalposix.cpp)
#include <base/osterminal_p.h>

#include <io.h>
#include <stdio.h>
#include <windows.h>

/// By the runtime library's number: it says -2 for a stream that a program without a console lacks, which _isatty()
/// would end the program for.
bool Vn::System::isTerminal(int stream)
{
    const int number = ::_fileno(stream == 1 ? stdout : stderr);
    return number >= 0 && ::_isatty(number) != 0;
}

/// The window and not the buffer, which may be wider than what one sees. Fails for what is no console.
int Vn::System::getTerminalColumns()
{
    ::CONSOLE_SCREEN_BUFFER_INFO info = {};
    if (!::GetConsoleScreenBufferInfo(::GetStdHandle(STD_OUTPUT_HANDLE), &info))
        return 0;
    return info.srWindow.Right - info.srWindow.Left + 1;
}
