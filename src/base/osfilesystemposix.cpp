// osfilesystemposix.cpp (Windows form: osfilesystemwindows.cpp)
#include <base/osfilesystem.h>

#include <base/exsyserror.h>
#include <base/osposix.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
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
    if (Posix::retry([&] { return ::stat(path, &status); }) != 0)
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
    const int file = Posix::retry([&] { return ::open(path, flags, Posix::modeOf(permissions)); });
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

}  // namespace Vn::System
