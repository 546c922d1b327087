// osfilehandlelinux.cpp (Windows form: osfilehandlewindows.cpp)
#include <base/osfilehandle_p.h>

#include <base/osposix_p.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace Vn::System
{
namespace
{
constexpr std::int64_t positionLimit = 0xFFFFFFFF;
constexpr unsigned long sizeLimit = 0xFFFFFFFF;  ///< of one reading or writing
/// For one call: less than the system moves at once, which depends on the size of its pages.
constexpr unsigned long callLimit = 0x40000000;
constexpr int waitsForNobody = O_NONBLOCK | O_NOCTTY | O_CLOEXEC;

int descriptorOf(std::int64_t handle)
{
    return static_cast<int>(handle);
}

/// Gives the open file back with `error` as the last one.
std::int64_t refuse(int file, int error)
{
    ::close(file);
    errno = error;
    return closedHandle;
}

/// Opening mustn't wait for the other end of a pipe; reading and writing may, as anybody's do.
bool letWait(int file)
{
    const int flags = ::fcntl(file, F_GETFL);
    return flags != -1 && ((flags & O_PATH) != 0 || ::fcntl(file, F_SETFL, flags & ~O_NONBLOCK) != -1);
}

std::int64_t settle(int file)
{
    if (file == -1)
        return closedHandle;
    struct ::stat status;
    if (Posix::retry([&] { return ::fstat(file, &status); }) != 0)
        return refuse(file, errno);
    if (S_ISDIR(status.st_mode))
        return refuse(file, EISDIR);
    if (!S_ISREG(status.st_mode) && !letWait(file))
        return refuse(file, errno);
    return file;
}

bool refuseOverflow()
{
    errno = EOVERFLOW;
    return false;
}

std::int64_t refuseSize()
{
    errno = EOVERFLOW;
    return -1;
}
}  // namespace

std::int64_t openFile(char const* path, int mode)
{
    constexpr int accesses[] = {O_PATH, O_RDONLY, O_WRONLY, O_RDWR};
    const int flags = accesses[mode & 3] | waitsForNobody;
    return settle(Posix::retry([&] { return ::open(path, flags); }));
}

std::int64_t openNewFile(char const* path, OsFileTypes::Permissions const& permissions, bool failIfExists)
{
    const int flags = O_WRONLY | O_CREAT | (failIfExists ? O_EXCL : O_TRUNC) | waitsForNobody;
    return settle(Posix::retry([&] { return ::open(path, flags, Posix::modeOf(permissions)); }));
}

std::int64_t readFile(std::int64_t handle, void* buffer, unsigned long size)
{
    if (size > sizeLimit)
        return refuseSize();
    char* const bytes = static_cast<char*>(buffer);
    unsigned long done = 0;
    for (;;) {
        const unsigned long wanted = std::min(size - done, callLimit);
        const ::ssize_t count = Posix::retry([&] { return ::read(descriptorOf(handle), bytes + done, wanted); });
        if (count == -1)
            return -1;
        done += static_cast<unsigned long>(count);
        // Asked again, a pipe would wait for bytes that nobody promised.
        if (static_cast<unsigned long>(count) < wanted || done == size)
            return static_cast<std::int64_t>(done);
    }
}

std::int64_t writeFile(std::int64_t handle, void const* buffer, unsigned long size)
{
    if (size > sizeLimit)
        return refuseSize();
    char const* const bytes = static_cast<char const*>(buffer);
    unsigned long done = 0;
    for (;;) {
        const unsigned long wanted = std::min(size - done, callLimit);
        const ::ssize_t count = Posix::retry([&] { return ::write(descriptorOf(handle), bytes + done, wanted); });
        const bool isFull = count == 0 || (count == -1 && errno == ENOSPC);
        if (count == -1 && !isFull)
            return -1;
        if (!isFull)
            done += static_cast<unsigned long>(count);
        if (isFull || done == size)
            return static_cast<std::int64_t>(done);
    }
}

bool seekFile(std::int64_t handle, long offset, OsFileTypes::SeekMode mode, std::int32_t& position)
{
    if (offset > positionLimit || offset < INT32_MIN)
        return refuseOverflow();
    const int file = descriptorOf(handle);
    const ::off_t before = ::lseek(file, 0, SEEK_CUR);
    const ::off_t after = before != -1 ? ::lseek(file, offset, originOf(mode)) : -1;
    if (after == -1)
        return false;
    if (after > positionLimit) {
        ::lseek(file, before, SEEK_SET);
        return refuseOverflow();
    }
    position = static_cast<std::int32_t>(static_cast<std::uint32_t>(after));
    return true;
}

bool setFileSize(std::int64_t handle, unsigned long size)
{
    if (size >= positionLimit)  // the last one is how the interface's call tells a failure
        return refuseOverflow();
    const int file = descriptorOf(handle);
    const ::off_t length = static_cast<::off_t>(size);
    return ::lseek(file, length, SEEK_SET) != -1 && Posix::retry([&] { return ::ftruncate(file, length); }) == 0;
}

bool closeFile(std::int64_t& handle)
{
    // Closing reports what a delayed write ran into, and the number is gone whatever it reports. So a second number is
    // closed first, and the file stays open behind ours if that has something to say.
    const int file = descriptorOf(handle);
    const int twin = ::fcntl(file, F_DUPFD_CLOEXEC, 0);
    const bool isUnknown = twin == -1 && errno == EBADF;
    if (isUnknown || (twin != -1 && ::close(twin) != 0 && errno != EINTR))
        return false;
    handle = closedHandle;
    const bool isClosed = ::close(file) == 0 || errno == EINTR;
    return twin != -1 || isClosed;
}

void dropFile(std::int64_t handle) noexcept
{
    if (handle != closedHandle)
        ::close(descriptorOf(handle));
}

}  // namespace Vn::System
