// osfilesystemwindows.cpp (Linux form: osfilesystemposix.cpp)
#include <base/osfilesystem.h>

#include <base/exsyserror.h>

#include <windows.h>

namespace Vn::System
{
namespace
{
constexpr char sourceName[] = "src/base/osfsutilswindows";

/// System, temporary, sparse, reparse point, compressed, offline, encrypted: a file with one of these is a special one.
constexpr DWORD specialAttributes = 0x5F04;
}  // namespace

FileKind getFileKind(char const* path)
{
    const DWORD attributes = ::GetFileAttributesA(path);
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return FileKind::Missing;
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
        return FileKind::Directory;
    return (attributes & specialAttributes) != 0 ? FileKind::SpecialFile : FileKind::RegularFile;
}

bool isSymLink(char const*)
{
    return false;
}

bool createDirectory(char const* path)
{
    if (::CreateDirectoryA(path, nullptr))
        return true;
    const DWORD error = ::GetLastError();
    if (error == ERROR_ALREADY_EXISTS)
        return false;
    if (error != 0)
        throw ExSysErrorWindows(sourceName, __LINE__);
    return true;  // nothing to report
}

void removeDirectory(char const* path)
{
    if (!::RemoveDirectoryA(path))
        throw ExSysErrorWindows(sourceName, __LINE__);
}

bool createFile(char const* path, OsFileTypes::Permissions const&, bool failIfExists)
{
    const HANDLE file =
        ::CreateFileA(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                      failIfExists ? CREATE_NEW : CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE && failIfExists && ::GetLastError() == ERROR_FILE_EXISTS)
        return false;
    if (file == INVALID_HANDLE_VALUE)
        throw ExSysErrorWindows(sourceName, __LINE__);
    ::CloseHandle(file);
    return true;
}

void deleteFile(char const* path)
{
    if (::DeleteFileA(path))
        return;
    const DWORD error = ::GetLastError();
    if (error != 0 && error != ERROR_FILE_NOT_FOUND)
        throw ExSysErrorWindows(sourceName, __LINE__);
}

}  // namespace Vn::System
