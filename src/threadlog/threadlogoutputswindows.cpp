// threadlogoutputswindows.cpp (POSIX form: threadlogoutputsposix.cpp)
//
// The layer opens each of the logger's files a second time, for the crash alone: the stream through which the logger writes
// may be in the middle of a line, in whichever thread. Two handles to one file get along because both only append: the
// system itself puts each write behind the end of the file. What the runtime does on the way is done here by hand: a line
// ends with two bytes in the logger's files, which are open in text mode.
//
// Everything that the crash calls takes its memory from this file's own buffers, as the heap may be locked as well.
#include <threadlog/threadlogoutputs_p.h>

#include <base/exsyserror.h>

#include <windows.h>

#include <cerrno>

namespace Vn
{
namespace
{
::HANDLE handleOf(std::intptr_t handle)
{
    return reinterpret_cast<::HANDLE>(handle);
}

/// `creation` says what becomes of a file that isn't there.
::HANDLE openFile(std::string const& path, ::DWORD access, ::DWORD creation)
{
    return ::CreateFileA(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, creation,
                         FILE_ATTRIBUTE_NORMAL, nullptr);
}

/// The system's words for an error, without the period and the line end that it adds; its number where it has no words.
std::string textOf(::DWORD error)
{
    char text[256] = "";
    const ::DWORD length = ::FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                            error, 0, text, sizeof text, nullptr);
    std::string result(text, length);
    while (!result.empty() && (result.back() == '\n' || result.back() == '\r' || result.back() == '.'))
        result.pop_back();
    return result.empty() ? "error " + std::to_string(error) : result;
}

/// All or nothing for us: the system takes a line in one piece, or the disk is full. A full pipe makes it wait until somebody
/// reads: a pipe that doesn't wait is one for everybody who has that end of it, so it stays as it is.
bool writeAll(::HANDLE file, char const* text, std::size_t size)
{
    ::DWORD done = 0;
    return ::WriteFile(file, text, static_cast<::DWORD>(size), &done, nullptr) != 0 && done == size;
}

/// Used by one thread, that of a crash. A line end is two bytes in the logger's files.
char converted[2 * 65536];

std::string_view withLineEnds(std::string_view text)
{
    std::size_t size = 0;
    for (const char character : text) {
        if (character == '\n')
            converted[size++] = '\r';
        converted[size++] = character;
        if (size + 2 > sizeof converted)
            break;
    }
    return {converted, size};
}
}  // namespace

/// The runtime's errno doesn't tell what the system said to the logger's own call.
std::string ThreadLogOutputs::getErrorText(int)
{
    return "it can't be written";
}

/// By trying once more what the logger tried, which makes a file that isn't there: what stood in its way is nearly always still
/// there.
std::string ThreadLogOutputs::getOpenFailure(std::string const& path)
{
    const ::HANDLE file = openFile(path, GENERIC_WRITE, OPEN_ALWAYS);
    if (file == INVALID_HANDLE_VALUE)
        return textOf(::GetLastError());
    ::CloseHandle(file);
    return "it couldn't be opened";
}

/// What the logger opens may be a link here.
bool ThreadLogOutputs::isSymlink(std::string const&)
{
    return false;
}

/// Never asked for, as no file is replaced here.
bool ThreadLogOutputs::isAlone(std::intptr_t)
{
    return false;
}

/// FILE_READ_DATA is for readTailOf(). Appending is the one access to write, so that each write goes to the file's end in one
/// step: with the plain access to write it would go to the handle's own place.
std::intptr_t ThreadLogOutputs::openHandle(std::string const& path)
{
    return reinterpret_cast<std::intptr_t>(
        openFile(path, FILE_APPEND_DATA | FILE_READ_DATA | SYNCHRONIZE, OPEN_EXISTING));
}

void ThreadLogOutputs::closeHandle(std::intptr_t handle)
{
    ::CloseHandle(handleOf(handle));
}

bool ThreadLogOutputs::appendTo(std::intptr_t handle, std::string_view text, bool&)
{
    const std::string_view line = withLineEnds(text);
    return writeAll(handleOf(handle), line.data(), line.size());
}

/// A program without a console has no such handle, and the write fails, which is all right.
void ThreadLogOutputs::appendToStandardOutput(std::string_view text)
{
    const std::string_view line = withLineEnds(text);
    writeAll(::GetStdHandle(STD_OUTPUT_HANDLE), line.data(), line.size());
}

/// Nothing writes through this handle meanwhile, so its place is free to move. The lines come with two bytes at their ends,
/// whose last one is that of a line.
std::size_t ThreadLogOutputs::readTailOf(std::intptr_t handle, char* bytes, std::size_t size)
{
    ::LARGE_INTEGER whole = {};
    if (!::GetFileSizeEx(handleOf(handle), &whole))
        return 0;
    ::LARGE_INTEGER start = {};
    start.QuadPart =
        whole.QuadPart > static_cast<::LONGLONG>(size) ? whole.QuadPart - static_cast<::LONGLONG>(size) : 0;
    ::DWORD done = 0;
    if (!::SetFilePointerEx(handleOf(handle), start, nullptr, FILE_BEGIN) ||
        !::ReadFile(handleOf(handle), bytes, static_cast<::DWORD>(size), &done, nullptr))
        return 0;
    return done;
}

/// Intended: nothing to do. The logger's files aren't open to be moved or deleted, so each is still where its name says.
std::string ThreadLogOutputs::reopenFile(Output&, std::string_view)
{
    return {};
}

}  // namespace Vn
