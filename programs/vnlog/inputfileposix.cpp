// inputfileposix.cpp (Windows form: inputfilewindows.cpp)
#include "inputfile.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

namespace vnlog
{
namespace
{
[[noreturn]] void fail(char const* what, std::string const& name)
{
    const int error = errno;
    throw std::runtime_error("cannot " + std::string(what) + " '" + name + "': " + std::strerror(error));
}

FileIdentity identityOf(struct ::stat const& status)
{
    return {static_cast<std::uint64_t>(status.st_dev), static_cast<std::uint64_t>(status.st_ino)};
}

struct ::stat statusOf(std::intptr_t handle, std::string const& name)
{
    struct ::stat status = {};
    if (::fstat(static_cast<int>(handle), &status) != 0)
        fail("look at", name);
    return status;
}
}  // namespace

InputFile::InputFile(std::string const& name) : _name(name), _handle(STDIN_FILENO)
{
    if (name == "-")
        return;
    _handle = ::open(name.c_str(), O_RDONLY | O_CLOEXEC);
    if (_handle < 0)
        fail("open", name);
    struct ::stat status = {};
    const bool isFolder = ::fstat(static_cast<int>(_handle), &status) == 0 && S_ISDIR(status.st_mode);
    if (isFolder) {
        ::close(static_cast<int>(_handle));
        errno = EISDIR;
        fail("read", name);
    }
    // A hint, and no harm if the system ignores it.
    ::posix_fadvise(static_cast<int>(_handle), 0, 0, POSIX_FADV_SEQUENTIAL);
}

InputFile::~InputFile()
{
    if (_handle != STDIN_FILENO)
        ::close(static_cast<int>(_handle));
}

std::size_t InputFile::read(char* buffer, std::size_t size)
{
    for (;;) {
        const ::ssize_t got = ::read(static_cast<int>(_handle), buffer, size);
        if (got >= 0)
            return static_cast<std::size_t>(got);
        if (errno != EINTR)
            fail("read", _name);
    }
}

void InputFile::rewind()
{
    if (::lseek(static_cast<int>(_handle), 0, SEEK_SET) < 0 && errno != ESPIPE)
        fail("rewind", _name);
}

std::optional<std::uint64_t> InputFile::getSize() const
{
    const struct ::stat status = statusOf(_handle, _name);
    return S_ISREG(status.st_mode) ? std::optional(static_cast<std::uint64_t>(status.st_size)) : std::nullopt;
}

FileIdentity InputFile::getIdentity() const
{
    return identityOf(statusOf(_handle, _name));
}

std::optional<FileIdentity> InputFile::findIdentity(std::string const& name)
{
    struct ::stat status = {};
    return ::stat(name.c_str(), &status) == 0 ? std::optional(identityOf(status)) : std::nullopt;
}

std::optional<FileIdentity> InputFile::findOutput()
{
    struct ::stat status = {};
    const bool isFile = ::fstat(STDOUT_FILENO, &status) == 0 && S_ISREG(status.st_mode);
    return isFile ? std::optional(identityOf(status)) : std::nullopt;
}

}  // namespace vnlog
