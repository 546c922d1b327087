// inputfilewindows.cpp (POSIX form: inputfileposix.cpp)
#include "inputfile.h"

#include <stdexcept>
#include <system_error>
#include <windows.h>

namespace vnlog
{
namespace
{
[[noreturn]] void fail(char const* what, std::string const& name)
{
    const DWORD error = ::GetLastError();
    throw std::runtime_error("cannot " + std::string(what) + " '" + name +
                             "': " + std::system_category().message(static_cast<int>(error)));
}

HANDLE handleOf(std::intptr_t handle)
{
    return reinterpret_cast<HANDLE>(handle);
}

std::optional<FileIdentity> identityOf(HANDLE handle)
{
    BY_HANDLE_FILE_INFORMATION information = {};
    if (!::GetFileInformationByHandle(handle, &information))
        return std::nullopt;
    return FileIdentity{information.dwVolumeSerialNumber,
                        std::uint64_t{information.nFileIndexHigh} << 32 | information.nFileIndexLow};
}

/// Whoever writes, renames or deletes the file is not in the way.
constexpr DWORD sharing = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
}  // namespace

InputFile::InputFile(std::string const& name)
    : _name(name), _handle(reinterpret_cast<std::intptr_t>(::GetStdHandle(STD_INPUT_HANDLE)))
{
    if (name == "-")
        return;
    HANDLE const handle = ::CreateFileA(name.c_str(), GENERIC_READ, sharing, nullptr, OPEN_EXISTING,
                                        FILE_FLAG_SEQUENTIAL_SCAN, nullptr);
    if (handle == INVALID_HANDLE_VALUE)
        fail("open", name);
    _handle = reinterpret_cast<std::intptr_t>(handle);
}

InputFile::~InputFile()
{
    if (_name != "-")
        ::CloseHandle(handleOf(_handle));
}

std::size_t InputFile::read(char* buffer, std::size_t size)
{
    DWORD got = 0;
    if (::ReadFile(handleOf(_handle), buffer, static_cast<DWORD>(size), &got, nullptr))
        return got;
    // The writer of a pipe has closed it.
    if (::GetLastError() == ERROR_BROKEN_PIPE)
        return 0;
    fail("read", _name);
}

void InputFile::rewind()
{
    if (getSize() && ::SetFilePointer(handleOf(_handle), 0, nullptr, FILE_BEGIN) != 0)
        fail("rewind", _name);
}

std::optional<std::uint64_t> InputFile::getSize() const
{
    LARGE_INTEGER size = {};
    if (::GetFileType(handleOf(_handle)) != FILE_TYPE_DISK || !::GetFileSizeEx(handleOf(_handle), &size))
        return std::nullopt;
    return static_cast<std::uint64_t>(size.QuadPart);
}

FileIdentity InputFile::getIdentity() const
{
    return identityOf(handleOf(_handle)).value_or(FileIdentity());
}

std::optional<FileIdentity> InputFile::findIdentity(std::string const& name)
{
    HANDLE const handle =
        ::CreateFileA(name.c_str(), 0, sharing, nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (handle == INVALID_HANDLE_VALUE)
        return std::nullopt;
    const std::optional<FileIdentity> identity = identityOf(handle);
    ::CloseHandle(handle);
    return identity;
}

std::optional<FileIdentity> InputFile::findOutput()
{
    HANDLE const handle = ::GetStdHandle(STD_OUTPUT_HANDLE);
    return ::GetFileType(handle) == FILE_TYPE_DISK ? identityOf(handle) : std::nullopt;
}

}  // namespace vnlog
