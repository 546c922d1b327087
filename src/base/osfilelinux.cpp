// osfilelinux.cpp (Windows form: osfilewindows.cpp)
//
// What OsFile, OsDirectory and OsFsUtils ask of Linux. Two families of functions:
//
//     throw themselves               those of OsFsUtils: createDirectory, removeDirectory, createFile, deleteFile
//     return false or nothing        the others; the caller throws with a source name of its own, from `errno`
//
// So nothing may change `errno` between a failing call and the caller's throw. Every call that a signal may interrupt
// is repeated (Posix::retry). Nothing is opened to ask a question: stat() needs only the right to search the
// directories on the way, and doesn't disturb other users of the file. All questions but isSymLink() follow symlinks.
//
// The rules come from Windows, so some calls are not the obvious ones:
//
//     rename          refuses to replace what is at the target, which rename() would do: renameat2()
//     access          by the effective user, as open() judges; access() would take the real one
//     new directory   a party that may read also may search, since permissions have no bit for that
//     delete          a missing file is accepted, a missing directory on its path is not; ENOENT means both
#include <base/osfile_p.h>

#include <base/exsyserror.h>
#include <base/osaccess_p.h>
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

/// The directory that contains the path's last element.
///
///     "pass/frame.exr"  ->  "pass/"
///     "pass/"           ->  ".", as for "pass"
///     "/"               ->  "/"
///
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

/// In ticks of 100 nanoseconds since the beginning of 1601; all bits set for a time outside the range of dates.
std::unique_ptr<OsDateTypes::DateRep> dateOf(::time_t seconds)
{
    constexpr std::int64_t secondsFrom1601To1970 = 11644473600;
    constexpr std::int64_t ticksPerSecond = 10000000;
    constexpr std::int64_t lastSecond = INT64_MAX / ticksPerSecond;
    const bool isDate = seconds >= -secondsFrom1601To1970 && seconds <= lastSecond - secondsFrom1601To1970;
    if (!isDate)
        return std::make_unique<OsDateTypes::DateRep>(0xFFFFFFFF, 0xFFFFFFFF);
    const std::int64_t ticks = (seconds + secondsFrom1601To1970) * ticksPerSecond;
    return std::make_unique<OsDateTypes::DateRep>(static_cast<std::uint32_t>(ticks >> 32),
                                                  static_cast<std::uint32_t>(ticks));
}

/// For file systems that can't rename without replacing. Another process may create the target between the two calls;
/// its file is then replaced.
bool renameUnlessTaken(char const* path, char const* target)
{
    struct ::stat status;
    if (Posix::retry([&] { return ::lstat(target, &status); }) == 0) {
        errno = EEXIST;
        return false;
    }
    return errno == ENOENT && Posix::retry([&] { return ::rename(path, target); }) == 0;
}

/// After a failed call: whether only the file is missing, and its directory exists. The system reports ENOENT in both
/// cases. Keeps `errno`.
bool isMissingInItsDirectory(char const* path)
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

// Read and write access are asked for as on Windows, and O_NONBLOCK so that a pipe in the file's place is no trap.
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
    if (Posix::retry([&] { return ::unlink(path); }) != 0 && !isMissingInItsDirectory(path))
        throw ExSysErrorWindows(sourceName, __LINE__);
}

bool makeDirectory(char const* path, OsFileTypes::Permissions const& permissions)
{
    const ::mode_t mode = Posix::modeOf(permissions);
    const ::mode_t search = (mode & 0444) >> 2;  // the bits "read" of all parties, at the place of "execute"
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

std::optional<std::string> readOwner(char const* path)
{
    struct ::stat status;
    return readStatus(path, status) ? Posix::findUserName(status.st_uid) : std::nullopt;
}

// Intended: a file of 5 GiB has the size 1 GiB, and one whose low half has all bits set is refused. Do not mend: the
// interface has 32 bits, and that value stands for a failure.
std::optional<std::uint32_t> readSize(char const* path)
{
    struct ::stat status;
    if (!readStatus(path, status))
        return std::nullopt;
    const auto size = static_cast<std::uint32_t>(status.st_size);
    if (size != 0xFFFFFFFF)
        return size;
    errno = EOVERFLOW;
    return std::nullopt;
}

std::optional<FilePlace> readPlace(char const* path)
{
    struct ::statfs fileSystem;
    if (Posix::retry([&] { return ::statfs(path, &fileSystem); }) != 0)
        return std::nullopt;
    return FilePlace{path, isRemoteFileSystem(static_cast<std::uint32_t>(fileSystem.f_type))};
}

bool hasAccess(char const* path, std::int32_t access) noexcept
{
    const int wanted = access == readAccess ? R_OK : W_OK;
    return Posix::retry([&] { return ::faccessat(AT_FDCWD, path, wanted, AT_EACCESS); }) == 0 &&
           getFileKind(path) != FileKind::Directory;
}

std::unique_ptr<OsDateTypes::DateRep> readTime(char const* path, FileTime which, char const* source)
{
    struct ::stat status;
    if (!readStatus(path, status))
        throw ExSysErrorWindows(source, __LINE__);
    return dateOf(which == FileTime::LastAccess ? status.st_atim.tv_sec : status.st_mtim.tv_sec);
}

std::optional<FileIdentity> identify(char const* path)
{
    struct ::stat status;
    if (!readStatus(path, status))
        return std::nullopt;
    return FileIdentity{status.st_dev, status.st_ino};
}

void setLoopError()
{
    errno = ELOOP;
}

}  // namespace Vn::System
