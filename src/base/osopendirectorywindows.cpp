// osopendirectorywindows.cpp (Linux form: osopendirectorylinux.cpp)
//
// A directory is held by a handle that doesn't share deletion. While it is open the system lets nobody rename or
// remove the directory, nor one above it, so the path leads to the same directory all the time and children are
// reached by their paths. The handle needs a right on the directory for that (listing or search): one that merely
// asks for attributes would not keep others away.
//
// A reparse point is opened itself where links are refused (FILE_FLAG_OPEN_REPARSE_POINT), and is then told by its
// attributes. RemoveDirectoryA() and DeleteFileA() never follow one.
#include <base/osopendirectory_p.h>

#include <base/exsyserror.h>
#include <base/osaccess_p.h>
#include <base/osfilehandle_p.h>
#include <base/osfilepath_p.h>

#include <windows.h>

#include <utility>

namespace Vn::System
{
namespace
{
constexpr char sourceName[] = "src/base/osdirectorywindows";
constexpr DWORD shared = FILE_SHARE_READ | FILE_SHARE_WRITE;  ///< without FILE_SHARE_DELETE
constexpr OpenedFile refused = {closedHandle, {}};

HANDLE systemHandle(std::int64_t handle)
{
    return reinterpret_cast<HANDLE>(static_cast<INT_PTR>(handle));
}

DWORD flagOf(Links links)
{
    return links == Links::Refused ? FILE_FLAG_OPEN_REPARSE_POINT : 0U;
}

OpenedFile closeWithError(HANDLE file, DWORD error)
{
    ::CloseHandle(file);
    ::SetLastError(error);
    return refused;
}

FileIdentity identityOf(BY_HANDLE_FILE_INFORMATION const& information)
{
    return {information.dwVolumeSerialNumber,
            std::uint64_t{information.nFileIndexHigh} << 32 | information.nFileIndexLow};
}

/// Opens what is at the path and looks at it: a reparse point is refused where links are.
OpenedFile open(std::string const& path, DWORD access, DWORD disposition, Links links, DWORD flags,
                BY_HANDLE_FILE_INFORMATION& information)
{
    const HANDLE file =
        ::CreateFileA(path.c_str(), access, shared, nullptr, disposition, flags | flagOf(links), nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return refused;
    if (!::GetFileInformationByHandle(file, &information))
        return closeWithError(file, ::GetLastError());
    if (links == Links::Refused && (information.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0)
        return closeWithError(file, ERROR_CANT_RESOLVE_FILENAME);
    return {reinterpret_cast<INT_PTR>(file), identityOf(information)};
}

/// The error of a listing, where that is refused too: it tells a missing directory from a missing file.
std::int64_t refuseListing(std::string const& path)
{
    const DWORD error = ::GetLastError();
    WIN32_FIND_DATAA entry;
    const HANDLE search = ::FindFirstFileA(getPathGrammar().join(path, "*").c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE)
        return closedHandle;
    ::FindClose(search);
    ::SetLastError(error);
    return closedHandle;
}

std::int64_t openDirectory(std::string const& path, Links links, OpenDirectory::Use use)
{
    const bool isListed = use == OpenDirectory::Use::Listing;
    BY_HANDLE_FILE_INFORMATION information;
    OpenedFile directory = open(path, isListed ? FILE_LIST_DIRECTORY : FILE_TRAVERSE, OPEN_EXISTING, links,
                                FILE_FLAG_BACKUP_SEMANTICS, information);
    if (directory.handle != closedHandle && (information.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
        directory = closeWithError(systemHandle(directory.handle), ERROR_DIRECTORY);
    return directory.handle == closedHandle && isListed ? refuseListing(path) : directory.handle;
}
}  // namespace

OpenDirectory::OpenDirectory(char const* path, Links links, Use use)
    : _path(path[0] != '\0' ? path : "."), _handle(openDirectory(_path, links, use))
{
    if (_handle == closedHandle)
        throw ExSysErrorWindows(sourceName, __LINE__);
}

OpenDirectory::OpenDirectory(OpenDirectory const& parent, char const* name, Links links, Use use)
    : _path(parent.pathOf(name)), _handle(openDirectory(_path, links, use))
{
    if (_handle == closedHandle)
        throw ExSysErrorWindows(sourceName, __LINE__);
}

OpenDirectory::OpenDirectory(OpenDirectory&& other) noexcept
    : _path(std::move(other._path)), _handle(std::exchange(other._handle, closedHandle))
{}

OpenDirectory::~OpenDirectory()
{
    dropFile(_handle);
}

FileIdentity OpenDirectory::getIdentity() const
{
    BY_HANDLE_FILE_INFORMATION information;
    if (!::GetFileInformationByHandle(systemHandle(_handle), &information))
        throw ExSysErrorWindows(sourceName, __LINE__);
    return identityOf(information);
}

std::string OpenDirectory::pathOf(char const* name) const
{
    return getPathGrammar().join(_path, name);
}

FileKind OpenDirectory::getKind(char const* name) const
{
    return getFileKind(pathOf(name).c_str());
}

bool OpenDirectory::isWritable(char const* name) const noexcept
{
    return hasAccess(pathOf(name).c_str(), writeAccess);
}

std::optional<FileIdentity> OpenDirectory::identify(char const* name, Links) const
{
    return System::identify(pathOf(name).c_str());
}

bool OpenDirectory::createChild(char const* name) const
{
    return createDirectory(pathOf(name).c_str());
}

void OpenDirectory::removeChild(char const* name) const
{
    const std::string path = pathOf(name);
    if (getFileKind(path.c_str()) == FileKind::Directory)
        removeDirectory(path.c_str());
    else
        deleteFile(path.c_str());
}

// Intended: what kind of file it is does not matter here, as many attributes make a file a special one. Do not mend.
OpenedFile OpenDirectory::openSource(char const* name, Links links, bool) const
{
    BY_HANDLE_FILE_INFORMATION information;
    return open(pathOf(name), GENERIC_READ, OPEN_EXISTING, links, FILE_ATTRIBUTE_NORMAL, information);
}

OpenedFile OpenDirectory::createTarget(char const* name) const
{
    BY_HANDLE_FILE_INFORMATION information;
    OpenedFile file =
        open(pathOf(name), GENERIC_WRITE, CREATE_NEW, Links::Refused, FILE_ATTRIBUTE_NORMAL, information);
    file.isTaken = file.handle == closedHandle && ::GetLastError() == ERROR_FILE_EXISTS;
    return file;
}

OpenedFile OpenDirectory::openTarget(char const* name, Links links) const
{
    BY_HANDLE_FILE_INFORMATION information;
    const OpenedFile file =
        open(pathOf(name), GENERIC_WRITE, OPEN_ALWAYS, links, FILE_ATTRIBUTE_NORMAL, information);
    if (file.handle != closedHandle && links == Links::Refused && information.nNumberOfLinks > 1)
        return closeWithError(systemHandle(file.handle), ERROR_FILE_INVALID);
    return file;
}

bool emptyFile(std::int64_t handle)
{
    return setFileSize(handle, 0);
}

void setChangedError()
{
    ::SetLastError(ERROR_FILE_INVALID);
}

}  // namespace Vn::System
