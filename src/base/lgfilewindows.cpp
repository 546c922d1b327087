// lgfilewindows.cpp (Linux form: lgfileposix.cpp)
//
// Every write names the end of the file as its place, so that the system moves there and writes in one step, and two
// processes never write over each other. The file is shared for reading and writing: several processes may have it open.
//
// Files hold CR LF at the ends of lines, so a text is translated before it is written, and a count of written bytes is translated
// back into characters of the text. A disk that takes the CR of a line end and refuses the LF gets the CR removed again: it is
// no character of the text, and the rest would begin with another one.
//
// Devices and pipes have no size and no end. The folder for temporary files is the user's own here, where nobody else can put a
// symlink, so a default file is opened like any other.
#include <base/lgfile_p.h>

#include <windows.h>

#include <new>

namespace Vn::System
{
namespace
{
constexpr ::DWORD sharing = FILE_SHARE_READ | FILE_SHARE_WRITE;

::HANDLE handleOf(std::intptr_t handle)
{
    return reinterpret_cast<::HANDLE>(handle);
}

/// Opens what is there, or makes it. Never empties it: that waits until no other level is known to have it open.
::HANDLE openFile(char const* path, ::DWORD access)
{
    return ::CreateFileA(path, access, sharing, nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
}

/// Returns how much the system took. An offset of all ones means the end of the file; a device gets none.
std::size_t writeAll(::HANDLE file, std::string_view text, bool isFile)
{
    std::size_t done = 0;
    while (done < text.size()) {
        ::OVERLAPPED atTheEnd = {};
        atTheEnd.Offset = atTheEnd.OffsetHigh = 0xFFFFFFFF;
        ::DWORD now = 0;
        if (!::WriteFile(file, text.data() + done, static_cast<::DWORD>(text.size() - done), &now,
                         isFile ? &atTheEnd : nullptr) ||
            now == 0)
            break;
        done += now;
    }
    return done;
}

/// True as well if the byte can't be read.
bool isLineEnd(::HANDLE file, std::uint64_t place)
{
    ::OVERLAPPED at = {};
    at.Offset = static_cast<::DWORD>(place);
    at.OffsetHigh = static_cast<::DWORD>(place >> 32);
    char byte = '\n';
    ::DWORD count = 0;
    return !::ReadFile(file, &byte, 1, &count, &at) || count == 0 || byte == '\n';
}
}  // namespace

LogOutput::~LogOutput()
{
    if (isOpen())
        ::CloseHandle(handleOf(_handle));
}

/// A file that may be written but not read is opened all the same: its end then counts as the end of a line.
bool LogOutput::open(char const* path, LgFile::Origin)
{
    ::HANDLE file = openFile(path, GENERIC_READ | GENERIC_WRITE);
    if (file == INVALID_HANDLE_VALUE)
        file = openFile(path, GENERIC_WRITE);  // its end can't be looked at
    if (file == INVALID_HANDLE_VALUE)
        return false;
    ::BY_HANDLE_FILE_INFORMATION information = {};
    _isRegular = ::GetFileType(file) == FILE_TYPE_DISK && ::GetFileInformationByHandle(file, &information);
    if (_isRegular)
        _identity = {information.dwVolumeSerialNumber,
                     std::uint64_t(information.nFileIndexHigh) << 32 | information.nFileIndexLow};
    else
        // No number tells two devices apart, so each opening counts as a file of its own.
        _identity = {~std::uint64_t(0), reinterpret_cast<std::uintptr_t>(file)};
    _handle = reinterpret_cast<std::intptr_t>(file);
    return true;
}

/// Moves the file pointer, which no write uses.
bool LogOutput::makeEmpty()
{
    if (!_isRegular)
        return true;
    ::LARGE_INTEGER start = {};
    return ::SetFilePointerEx(handleOf(_handle), start, nullptr, FILE_BEGIN) && ::SetEndOfFile(handleOf(_handle));
}

/// In bytes of the file, CR included.
std::optional<std::uint64_t> LogOutput::getSize() const
{
    ::LARGE_INTEGER size = {};
    if (!_isRegular || !::GetFileSizeEx(handleOf(_handle), &size))
        return {};
    return static_cast<std::uint64_t>(size.QuadPart);
}

/// The byte before that size: `size` is not 0.
bool LogOutput::endsLineAt(std::uint64_t size) const
{
    return isLineEnd(handleOf(_handle), size - 1);
}

/// Without memory for the translation nothing is written, and the text waits as on a full disk.
std::size_t LogOutput::append(std::string_view text)
{
    try {
        _fileText.clear();
        for (const char character : text) {
            if (character == '\n')
                _fileText += '\r';
            _fileText += character;
        }
    } catch (std::bad_alloc const&) {
        return 0;
    }
    const std::size_t written = writeAll(handleOf(_handle), _fileText, _isRegular);
    if (written == _fileText.size())
        return text.size();
    if (written > 0 && _fileText[written - 1] == '\r' && _fileText[written] == '\n')
        removeFromEnd(1);
    // How many characters of the text are wholly in the file.
    std::size_t done = 0;
    for (std::size_t inFile = 0; done < text.size(); ++done) {
        inFile += text[done] == '\n' ? 2 : 1;
        if (inFile > written)
            break;
    }
    return done;
}

/// In characters of the file: the caller's have no line end among them, so they are as many there.
bool LogOutput::removeFromEnd(std::size_t size)
{
    const std::optional<std::uint64_t> whole = getSize();
    if (!whole || *whole < size)
        return false;
    ::LARGE_INTEGER end = {};
    end.QuadPart = static_cast<::LONGLONG>(*whole - size);
    return ::SetFilePointerEx(handleOf(_handle), end, nullptr, FILE_BEGIN) && ::SetEndOfFile(handleOf(_handle));
}

/// Where the end can't be looked at, a line counts as torn: an empty line does less harm than two lines in one.
std::optional<std::uint64_t> getStandardOutputEnd()
{
    ::HANDLE const output = ::GetStdHandle(STD_OUTPUT_HANDLE);
    ::LARGE_INTEGER place = {};
    if (::GetFileType(output) != FILE_TYPE_DISK || !::SetFilePointerEx(output, {}, &place, FILE_CURRENT))
        return {};
    return static_cast<std::uint64_t>(place.QuadPart);
}

std::optional<bool> isLineEndOfStandardOutput(std::uint64_t end)
{
    // It is rarely open for reading itself.
    ::HANDLE const readable =
        ::ReOpenFile(::GetStdHandle(STD_OUTPUT_HANDLE), GENERIC_READ, sharing | FILE_SHARE_DELETE, 0);
    if (readable == INVALID_HANDLE_VALUE)
        return {};
    const bool isEnd = isLineEnd(readable, end - 1);
    ::CloseHandle(readable);
    return isEnd;
}

}  // namespace Vn::System
