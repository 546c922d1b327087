// osopendirectorylinux.cpp (Windows form: osopendirectorywindows.cpp)
//
// A directory is held by its descriptor, and each child is reached from there by its bare name (openat() and its
// family). So the kernel resolves one name in the very directory that was opened, and a link or another directory at
// the path it once had changes nothing. Three rules keep what is opened from being a trap:
//
//     O_NOFOLLOW    where a link is refused. A directory: ENOTDIR; a file: ELOOP
//     O_NONBLOCK    a pipe is opened without its other end, and stays that way: a reading that would wait fails
//     fstat()       what was opened is asked what it is, not its name
//
// Nothing is emptied by its opening (no O_TRUNC): the caller first compares the file with the source.
#include <base/osopendirectory_p.h>

#include <base/exsyserror.h>
#include <base/osaccess_p.h>
#include <base/osfilehandle_p.h>
#include <base/osfilepath_p.h>
#include <base/osposix_p.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace Vn::System
{
namespace
{
constexpr char sourceName[] = "src/base/osdirectorywindows";
constexpr char utilitySourceName[] = "src/base/osfsutilswindows";
constexpr OpenedFile refused = {closedHandle, {}};

int flagOf(Links links)
{
    return links == Links::Refused ? O_NOFOLLOW : 0;
}

/// O_PATH needs no right on the directory itself, only the search of those above it.
int flagsOf(Links links, OpenDirectory::Use use)
{
    return O_DIRECTORY | O_CLOEXEC | flagOf(links) | (use == OpenDirectory::Use::Listing ? O_RDONLY : O_PATH);
}

int openIn(std::int64_t directory, char const* name, int flags, ::mode_t mode = 0)
{
    return Posix::liftAboveStandard(
        Posix::retry([&] { return ::openat(static_cast<int>(directory), name, flags | O_CLOEXEC, mode); }));
}

FileIdentity identityOf(struct ::stat const& status)
{
    return {status.st_dev, status.st_ino};
}

bool readStatus(std::int64_t directory, char const* name, Links links, struct ::stat& status)
{
    const int flags = links == Links::Refused ? AT_SYMLINK_NOFOLLOW : 0;
    return Posix::retry([&] { return ::fstatat(static_cast<int>(directory), name, &status, flags); }) == 0;
}

OpenedFile closeWithError(int file, int error)
{
    ::close(file);
    errno = error;
    return refused;
}

/// What of the opened file is refused, as an error; 0 for nothing.
template <class Refusal>
OpenedFile finishOpening(int file, Refusal const& refusal)
{
    if (file == -1)
        return refused;
    struct ::stat status;
    if (Posix::retry([&] { return ::fstat(file, &status); }) != 0)
        return closeWithError(file, errno);
    const int error = S_ISDIR(status.st_mode) ? EISDIR : refusal(status);
    return error == 0 ? OpenedFile{file, identityOf(status)} : closeWithError(file, error);
}

constexpr int fileFlags = O_NONBLOCK | O_NOCTTY;

/// Those of OsFile::copyTo().
::mode_t modeOfCopy()
{
    return Posix::modeOf(OsFileTypes::Permissions(3, 3, 0));
}
}  // namespace

OpenDirectory::OpenDirectory(char const* path, Links links, Use use)
    : _path(path), _handle(Posix::openFile(path[0] != '\0' ? path : ".", flagsOf(links, use)))
{
    if (_handle == closedHandle)
        throw ExSysErrorWindows(sourceName, __LINE__);
}

OpenDirectory::OpenDirectory(OpenDirectory const& parent, char const* name, Links links, Use use)
    : _path(parent.pathOf(name)), _handle(openIn(parent._handle, name, flagsOf(links, use)))
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
    struct ::stat status;
    if (Posix::retry([&] { return ::fstat(static_cast<int>(_handle), &status); }) != 0)
        throw ExSysErrorWindows(sourceName, __LINE__);
    return identityOf(status);
}

std::string OpenDirectory::pathOf(char const* name) const
{
    return getPathGrammar().join(_path, name);
}

FileKind OpenDirectory::getKind(char const* name) const
{
    struct ::stat status;
    if (!readStatus(_handle, name, Links::Followed, status))
        return FileKind::Missing;
    if (S_ISDIR(status.st_mode))
        return FileKind::Directory;
    return S_ISREG(status.st_mode) ? FileKind::RegularFile : FileKind::SpecialFile;
}

bool OpenDirectory::isWritable(char const* name) const noexcept
{
    return Posix::retry([&] { return ::faccessat(static_cast<int>(_handle), name, W_OK, AT_EACCESS); }) == 0;
}

std::optional<FileIdentity> OpenDirectory::identify(char const* name, Links links) const
{
    struct ::stat status;
    if (!readStatus(_handle, name, links, status))
        return std::nullopt;
    return identityOf(status);
}

bool OpenDirectory::createChild(char const* name) const
{
    if (Posix::retry([&] { return ::mkdirat(static_cast<int>(_handle), name, 0777); }) == 0)
        return true;
    if (errno != EEXIST)
        throw ExSysErrorWindows(utilitySourceName, __LINE__);
    return false;
}

// Without a question before: the system tells a directory from the rest in the same call that removes.
void OpenDirectory::removeChild(char const* name) const
{
    const int directory = static_cast<int>(_handle);
    if (Posix::retry([&] { return ::unlinkat(directory, name, 0); }) == 0)
        return;
    if (errno == EISDIR && Posix::retry([&] { return ::unlinkat(directory, name, AT_REMOVEDIR); }) == 0)
        return;
    const int error = errno;
    struct ::stat status;
    // A removed directory is still open, but has no name any more.
    if (error == ENOENT && ::fstat(directory, &status) == 0 && status.st_nlink != 0)
        return;
    errno = error;
    throw ExSysErrorWindows(utilitySourceName, __LINE__);
}

OpenedFile OpenDirectory::openSource(char const* name, Links links, bool isRegular) const
{
    return finishOpening(
        openIn(_handle, name, O_RDONLY | fileFlags | flagOf(links)),
        [isRegular](struct ::stat const& status) { return isRegular && !S_ISREG(status.st_mode) ? ESTALE : 0; });
}

OpenedFile OpenDirectory::createTarget(char const* name) const
{
    const int file = openIn(_handle, name, O_WRONLY | O_CREAT | O_EXCL | fileFlags, modeOfCopy());
    if (file == -1 && errno == EEXIST)
        return {closedHandle, {}, true};
    return finishOpening(file, [](struct ::stat const&) { return 0; });
}

OpenedFile OpenDirectory::openTarget(char const* name, Links links) const
{
    return finishOpening(openIn(_handle, name, O_WRONLY | O_CREAT | fileFlags | flagOf(links), modeOfCopy()),
                         [links](struct ::stat const& status) {
                             const bool isOwn = S_ISREG(status.st_mode) && status.st_nlink == 1;
                             return links == Links::Refused && !isOwn ? ESTALE : 0;
                         });
}

bool emptyFile(std::int64_t handle)
{
    const int file = static_cast<int>(handle);
    struct ::stat status;
    if (Posix::retry([&] { return ::fstat(file, &status); }) != 0)
        return false;
    return !S_ISREG(status.st_mode) || status.st_size == 0 ||
           Posix::retry([&] { return ::ftruncate(file, 0); }) == 0;
}

void setChangedError()
{
    errno = ESTALE;
}

}  // namespace Vn::System
