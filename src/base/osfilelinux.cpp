// osfilelinux.cpp (Windows form: osfilewindows.cpp)
#include <base/osfile_p.h>

#include <base/exsyserror.h>
#include <base/osposix_p.h>
#include <base/osremote_p.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string_view>

namespace Vn::System
{
namespace
{
constexpr char sourceName[] = "src/base/osfsutilswindows";

/// The folder that holds `path`, "." for a plain name.
std::string parentOf(std::string_view path)
{
    while (path.size() > 1 && path.back() == '/')
        path.remove_suffix(1);
    const std::size_t last = path.rfind('/');
    if (last == std::string_view::npos)
        return ".";
    return std::string(path.substr(0, last + 1));
}

bool readStatus(char const* path, struct ::stat& status)
{
    return Posix::retry([&] { return ::stat(path, &status); }) == 0;
}

/// Ticks of 100 nanoseconds since the beginning of 1601.
OsDateTypes::DateRep* dateOf(::time_t seconds)
{
    constexpr std::int64_t secondsFrom1601To1970 = 11644473600;
    constexpr std::int64_t ticksPerSecond = 10000000;
    constexpr std::int64_t lastSecond = INT64_MAX / ticksPerSecond;
    const bool isDate = seconds >= -secondsFrom1601To1970 && seconds <= lastSecond - secondsFrom1601To1970;
    if (!isDate)
        return new OsDateTypes::DateRep(0xFFFFFFFF, 0xFFFFFFFF);
    const std::int64_t ticks = (seconds + secondsFrom1601To1970) * ticksPerSecond;
    return new OsDateTypes::DateRep(static_cast<std::uint32_t>(ticks >> 32), static_cast<std::uint32_t>(ticks));
}

/// For file systems that can't rename without replacing.
bool renameUnlessTaken(char const* path, char const* target)
{
    struct ::stat status;
    if (Posix::retry([&] { return ::lstat(target, &status); }) == 0) {
        errno = EEXIST;
        return false;
    }
    return errno == ENOENT && Posix::retry([&] { return ::rename(path, target); }) == 0;
}

/// The system says the same of a missing file and of one in a missing directory.
bool isAloneMissing(char const* path)
{
    const int error = errno;
    const bool isMissing =
        error == ENOENT && path[0] != '\0' && getFileKind(parentOf(path).c_str()) == FileKind::Directory;
    errno = error;
    return isMissing;
}
}  // namespace

FileKind getFileKind(char const* path)
{
    struct ::stat status;
    if (!readStatus(path, status))
        return FileKind::Missing;
    if (S_ISDIR(status.st_mode))
        return FileKind::Directory;
    return S_ISREG(status.st_mode) ? FileKind::RegularFile : FileKind::SpecialFile;
}

bool isSymLink(char const* path)
{
    struct ::stat status;
    return Posix::retry([&] { return ::lstat(path, &status); }) == 0 && S_ISLNK(status.st_mode);
}

bool createDirectory(char const* path)
{
    if (Posix::retry([&] { return ::mkdir(path, 0777); }) == 0)
        return true;
    if (errno != EEXIST)
        throw ExSysErrorWindows(sourceName, __LINE__);
    return false;
}

void removeDirectory(char const* path)
{
    if (Posix::retry([&] { return ::rmdir(path); }) != 0)
        throw ExSysErrorWindows(sourceName, __LINE__);
}

bool createFile(char const* path, OsFileTypes::Permissions const& permissions, bool failIfExists)
{
    const int flags = O_RDWR | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY | (failIfExists ? O_EXCL : O_TRUNC);
    const int file = Posix::openFile(path, flags, Posix::modeOf(permissions));
    if (file == -1 && failIfExists && errno == EEXIST)
        return false;
    if (file == -1)
        throw ExSysErrorWindows(sourceName, __LINE__);
    ::close(file);
    return true;
}

void deleteFile(char const* path)
{
    if (Posix::retry([&] { return ::unlink(path); }) != 0 && !isAloneMissing(path))
        throw ExSysErrorWindows(sourceName, __LINE__);
}

bool makeDirectory(char const* path, OsFileTypes::Permissions const& permissions)
{
    // Reading a directory is of no use without leave to search it.
    const ::mode_t mode = Posix::modeOf(permissions);
    const ::mode_t search = (mode & 0444) >> 2;
    return Posix::retry([&] { return ::mkdir(path, mode | search); }) == 0;
}

bool removeEmptyDirectory(char const* path)
{
    return Posix::retry([&] { return ::rmdir(path); }) == 0;
}

bool removeFile(char const* path)
{
    return Posix::retry([&] { return ::unlink(path); }) == 0;
}

bool renameFile(char const* path, char const* target)
{
    const int result =
        Posix::retry([&] { return ::renameat2(AT_FDCWD, path, AT_FDCWD, target, RENAME_NOREPLACE); });
    if (result != 0 && (errno == EINVAL || errno == ENOSYS))
        return renameUnlessTaken(path, target);
    return result == 0;
}

bool readOwner(char const* path, std::string& owner)
{
    struct ::stat status;
    return readStatus(path, status) && Posix::findUserName(status.st_uid, owner);
}

bool readSize(char const* path, std::uint32_t& size)
{
    struct ::stat status;
    if (!readStatus(path, status))
        return false;
    size = static_cast<std::uint32_t>(status.st_size);
    if (size != 0xFFFFFFFF)
        return true;
    errno = EOVERFLOW;
    return false;
}

bool readPlace(char const* path, std::string& place, bool& isRemote)
{
    struct ::statfs fileSystem;
    if (Posix::retry([&] { return ::statfs(path, &fileSystem); }) != 0)
        return false;
    place = path;
    isRemote = isRemoteFileSystem(static_cast<std::uint32_t>(fileSystem.f_type));
    return true;
}

bool hasAccess(char const* path, std::int32_t access)
{
    const int wanted = access == 1 ? R_OK : W_OK;
    return Posix::retry([&] { return ::faccessat(AT_FDCWD, path, wanted, AT_EACCESS); }) == 0 &&
           getFileKind(path) != FileKind::Directory;
}

OsDateTypes::DateRep* readTime(char const* path, FileTime which, char const* source)
{
    struct ::stat status;
    if (!readStatus(path, status))
        throw ExSysErrorWindows(source, __LINE__);
    return dateOf(which == FileTime::LastAccess ? status.st_atim.tv_sec : status.st_mtim.tv_sec);
}

bool identify(char const* path, FileIdentity& identity)
{
    struct ::stat status;
    if (!readStatus(path, status))
        return false;
    identity = {status.st_dev, status.st_ino};
    return true;
}

void setLoopError()
{
    errno = ELOOP;
}

}  // namespace Vn::System
