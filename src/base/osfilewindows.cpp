// osfilewindows.cpp (Linux form: osfilelinux.cpp)
//
// What OsFile, OsDirectory and OsFsUtils ask of Windows. Two families of functions:
//
//     throw themselves               those of OsFsUtils: createDirectory, removeDirectory, createFile, deleteFile
//     return false or nothing        the others; the caller throws with a source name of its own, from GetLastError()
//
// So nothing may change the last error between a failing call and the caller's throw: OpenFile restores it when it
// closes its handle. The questions about size and times open the file for reading first, shared with readers and
// writers; a directory does not open this way, so they refuse it. Identity is asked without any access, which works
// for directories and for files that are open exclusively.
//
// File times go through local time to a date in whole seconds, and back to UTC by the seam of OsDateUtil.
#include <base/osfile_p.h>

#include <base/exsyserror.h>
#include <base/osaccess_p.h>
#include <base/oscalendar_p.h>
#include <base/osdateutil_p.h>

#include <windows.h>

#include <stdio.h>

#include <memory>
#include <string>
#include <string_view>

namespace Vn::System
{
namespace
{
constexpr char sourceName[] = "src/base/osfsutilswindows";

/// System, temporary, sparse, reparse point, compressed, offline, encrypted: a file with one of these is special.
// Intended: a compressed or temporary file is thus no regular one, and isFile() is false for it. Do not mend: the
// mask is part of what an element type means.
constexpr DWORD specialAttributes = 0x5F04;

/// An open file. Closing it leaves the last error as it was, so that the error of a failing call can still be thrown.
class OpenFile
{
public:
    OpenFile(char const* path, DWORD access, DWORD sharing, DWORD flags = FILE_ATTRIBUTE_NORMAL)
        : _handle(::CreateFileA(path, access, sharing, nullptr, OPEN_EXISTING, flags, nullptr))
    {}

    ~OpenFile()
    {
        if (!isOpen())
            return;
        const DWORD error = ::GetLastError();
        ::CloseHandle(_handle);
        ::SetLastError(error);
    }

    OpenFile(OpenFile const&) = delete;
    OpenFile& operator=(OpenFile const&) = delete;

    bool isOpen() const { return _handle != INVALID_HANDLE_VALUE; }
    HANDLE get() const { return _handle; }

private:
    HANDLE _handle;
};

/// Others may read and write the file while we look at it.
constexpr DWORD sharedWithAll = FILE_SHARE_READ | FILE_SHARE_WRITE;

/// One of the file's times in UTC. False, with the last error set, if the file can't be opened for reading.
bool readFileTime(char const* path, FileTime which, FILETIME& time)
{
    const OpenFile file(path, GENERIC_READ, sharedWithAll);
    const bool isAccess = which == FileTime::LastAccess;
    return file.isOpen() &&
           ::GetFileTime(file.get(), nullptr, isAccess ? &time : nullptr, isAccess ? nullptr : &time);
}

/// False as well if either is missing.
bool isSameElement(char const* path, char const* other)
{
    const std::optional<FileIdentity> identity = identify(path);
    return identity && identity == identify(other);
}

/// What stands behind the last separator that has a name behind it.
std::string_view leafOf(std::string_view path)
{
    constexpr std::string_view separators = "\\/:";
    while (!path.empty() && separators.find(path.back()) != std::string_view::npos)
        path.remove_suffix(1);
    const std::size_t last = path.find_last_of(separators);
    return last == std::string_view::npos ? path : path.substr(last + 1);
}

/// Whether two paths differ in the upper and lower case of their last name, which renaming can change.
bool isOtherSpelling(char const* path, char const* other)
{
    const std::string leaf(leafOf(path));
    const std::string otherLeaf(leafOf(other));
    return leaf != otherLeaf && ::lstrcmpiA(leaf.c_str(), otherLeaf.c_str()) == 0;
}
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

// Intended: reparse points are no symlinks here, but special files. Do not mend.
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
    return true;  // Intended: a failure without an error counts as success. Do not mend.
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

// A missing directory in the path has an error of its own here, unlike on Linux: ERROR_PATH_NOT_FOUND.
void deleteFile(char const* path)
{
    if (::DeleteFileA(path))
        return;
    const DWORD error = ::GetLastError();
    if (error != 0 && error != ERROR_FILE_NOT_FOUND)
        throw ExSysErrorWindows(sourceName, __LINE__);
}

// Permissions are ignored: a new element inherits those of its directory.
bool makeDirectory(char const* path, OsFileTypes::Permissions const&)
{
    return ::CreateDirectoryA(path, nullptr);
}

bool removeEmptyDirectory(char const* path)
{
    return ::RemoveDirectoryA(path);
}

bool removeFile(char const* path)
{
    return ::DeleteFileA(path);
}

bool renameFile(char const* path, char const* target)
{
    // The system takes a file's own path for done.
    if (isSameElement(path, target) && !isOtherSpelling(path, target)) {
        ::SetLastError(ERROR_ALREADY_EXISTS);
        return false;
    }
    return ::rename(path, target) == 0;
}

// Intended: no owner on Windows. Do not mend: programs show the empty text as "not told".
std::optional<std::string> readOwner(char const*)
{
    return std::string();
}

std::optional<std::uint32_t> readSize(char const* path)
{
    const OpenFile file(path, GENERIC_READ, sharedWithAll);
    // Without the high half: the low one with all bits set is then the failure, and a size that ends in it is
    // refused.
    const DWORD size = file.isOpen() ? ::GetFileSize(file.get(), nullptr) : INVALID_FILE_SIZE;
    if (size == INVALID_FILE_SIZE)
        return std::nullopt;
    return size;
}

// By the drive's letter alone; a path that begins with two separators gives a root that is not known as remote.
std::optional<FilePlace> readPlace(char const* path)
{
    // The first two characters as they are: a relative path gives a root that the system doesn't know, thus no remote
    // one.
    const char root[] = {path[0], path[0] != '\0' ? path[1] : '\0', '\\', '\0'};
    return FilePlace{root, ::GetDriveTypeA(root) == DRIVE_REMOTE};
}

bool hasAccess(char const* path, std::int32_t access) noexcept
{
    // Intended: asked for exclusively, so a file that another handle has open counts as not accessible. Do not mend:
    // the question is whether we can have the file to ourselves.
    return OpenFile(path, access == readAccess ? GENERIC_READ : GENERIC_WRITE, 0).isOpen();
}

std::unique_ptr<OsDateTypes::DateRep> readTime(char const* path, FileTime which, char const* source)
{
    FILETIME time;
    FILETIME local;
    SYSTEMTIME fields;
    if (!readFileTime(path, which, time) || !::FileTimeToLocalFileTime(&time, &local) ||
        !::FileTimeToSystemTime(&local, &fields))
        throw ExSysErrorWindows(source, __LINE__);
    // Without the milliseconds and the day of the week. A failure is not tested: the date then keeps all bits set.
    const std::optional<std::uint64_t> ticks = calendarToTicks(
        {fields.wYear, fields.wMonth, fields.wDay, fields.wHour, fields.wMinute, fields.wSecond, 0, 0});
    const std::optional<std::uint64_t> utc = ticks ? localToTicks(*ticks) : std::nullopt;
    return std::make_unique<OsDateTypes::DateRep>(utc ? OsDateTypes::DateRep::fromTicks(*utc)
                                                      : OsDateTypes::DateRep(0xFFFFFFFF, 0xFFFFFFFF));
}

std::optional<FileIdentity> identify(char const* path)
{
    // Without any access no other handle's sharing mode can refuse us; the flag opens directories as well.
    const OpenFile file(path, 0, sharedWithAll | FILE_SHARE_DELETE, FILE_FLAG_BACKUP_SEMANTICS);
    BY_HANDLE_FILE_INFORMATION information;
    if (!file.isOpen() || !::GetFileInformationByHandle(file.get(), &information))
        return std::nullopt;
    return FileIdentity{information.dwVolumeSerialNumber,
                        std::uint64_t{information.nFileIndexHigh} << 32 | information.nFileIndexLow};
}

void setLoopError()
{
    ::SetLastError(ERROR_CANT_RESOLVE_FILENAME);
}

}  // namespace Vn::System
