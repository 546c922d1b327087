// osfilepathwindows.cpp (Linux form: osfilepathposix.cpp)
//
// The system resolves paths itself, GetFullPathNameA, against the current directory of the path's drive. It also
// tells where the last element begins: null if the path ends in a separator, which becomes the end of the text here.
// Results longer than the buffer are refused instead of cut, since a cut path would name another file.
#include <base/exsyserror.h>
#include <base/osfilepath_p.h>

#include <direct.h>
#include <windows.h>

#include <cstdio>

namespace Vn::System
{
namespace
{
constexpr char sourceName[] = "src/base/osfilepathwindows";
constexpr DWORD bufferSize = 1024;
}  // namespace

OsFilePathGrammar getPathGrammar()
{
    return OsFilePathGrammars::onWindows();
}

ResolvedPath resolvePath(char const* path)
{
    char buffer[bufferSize];
    char* last = nullptr;
    const DWORD length = ::GetFullPathNameA(path, bufferSize, buffer, &last);
    if (length == 0)
        throw ExSysErrorWindows(sourceName, __LINE__);
    if (length >= bufferSize) {  // the result is then the size that it needs, and the buffer is undefined
        ::SetLastError(ERROR_FILENAME_EXCED_RANGE);
        throw ExSysErrorWindows(sourceName, __LINE__);
    }
    return {buffer, last != nullptr ? static_cast<std::size_t>(last - buffer) : length};
}

// As the system gives it, with a separator at the end.
void getTempDir(char* buffer, std::size_t size)
{
    if (::GetTempPathA(static_cast<DWORD>(size), buffer) == 0)
        throw ExSysErrorWindows(sourceName, __LINE__);
}

// Of the current drive, so it changes with that.
void getRootDir(char* buffer, std::size_t size)
{
    std::snprintf(buffer, size, "%c:\\", ::_getdrive() + 64);  // 1 is drive A
}

}  // namespace Vn::System
