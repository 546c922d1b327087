// osfilehandlelinux.cpp (Windows form: osfilehandlewindows.cpp)
//
// A handle is a descriptor above 2. Each function is one call of the system, with four additions:
//
//     open      O_NONBLOCK, so that opening a pipe does not wait for its other end; removed again after opening,
//               because reading and writing shall wait. A directory is refused, as on Windows.
//     read      goes on only after a call that the limit of one call cut short: asked again, a pipe or terminal would
//               wait for bytes that nobody has promised
//     write     goes on after every short count; a full device ends it with what has been written
//     close     through a duplicate, so that a failed one leaves the file open: see closeFile()
//
// A large file is copied by the system itself, in one of two ways, and what they leave is copied by read() and
// write():
//
//     FICLONE             the copy shares the blocks of the file until either is changed; on btrfs, XFS and the like
//     copy_file_range()   moves bytes in the kernel, or on the server of a network file system
//
// Whatever refuses these (another file system, a pipe, an old kernel, a full device) is no failure of the copy:
// reading and writing decide, and report it. A file that grows or shrinks meanwhile is copied up to the end that
// reading finds.
//
// Positions and sizes have 32 bits in the interface. What the system could do beyond that is refused with EOVERFLOW.
#include <base/osfilehandle_p.h>

#include <base/osaccess_p.h>
#include <base/osposix_p.h>

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace Vn::System
{
namespace
{
constexpr std::int64_t positionLimit = 0xFFFFFFFF;
constexpr unsigned long sizeLimit = 0xFFFFFFFF;  ///< bytes of one reading or writing
/// Bytes of one call. The system's own limit, just below 2 GiB, depends on the size of its pages.
constexpr unsigned long callLimit = 0x40000000;
constexpr int openFlags = O_NONBLOCK | O_NOCTTY | O_CLOEXEC;

int descriptorOf(std::int64_t handle)
{
    return static_cast<int>(handle);
}

/// Closes a file that was opened in vain; `errno` becomes `error`.
std::int64_t closeWithError(int file, int error)
{
    ::close(file);
    errno = error;
    return closedHandle;
}

/// Removes O_NONBLOCK. A file that was opened as a mere path (O_PATH) has no such flag.
bool makeBlocking(int file)
{
    const int flags = ::fcntl(file, F_GETFL);
    return flags != -1 && ((flags & O_PATH) != 0 || ::fcntl(file, F_SETFL, flags & ~O_NONBLOCK) != -1);
}

/// The second half of opening, `file` being what open() returned: refuses a directory, and lets a pipe or device
/// block.
std::int64_t finishOpening(int file)
{
    if (file == -1)
        return closedHandle;
    struct ::stat status;
    if (Posix::retry([&] { return ::fstat(file, &status); }) != 0)
        return closeWithError(file, errno);
    if (S_ISDIR(status.st_mode))
        return closeWithError(file, EISDIR);
    if (!S_ISREG(status.st_mode) && !makeBlocking(file))
        return closeWithError(file, errno);
    return file;
}

/// What the caller returns after an operation beyond 32 bits.
template <class Result>
Result refuseOverflow(Result failure)
{
    errno = EOVERFLOW;
    return failure;
}
}  // namespace

std::int64_t openFile(char const* path, int mode)
{
    static_assert(System::readAccess == 1 && System::writeAccess == 2);
    constexpr int accesses[] = {O_PATH, O_RDONLY, O_WRONLY, O_RDWR};  // O_PATH: to have the file, with no access
    const int flags = accesses[mode & 3] | openFlags;
    return finishOpening(Posix::openFile(path, flags));
}

std::int64_t openNewFile(char const* path, OsFileTypes::Permissions const& permissions, bool failIfExists)
{
    const int flags = O_WRONLY | O_CREAT | (failIfExists ? O_EXCL : O_TRUNC) | openFlags;
    return finishOpening(Posix::openFile(path, flags, Posix::modeOf(permissions)));
}

std::int64_t readFile(std::int64_t handle, void* buffer, unsigned long size)
{
    if (size > sizeLimit)
        return refuseOverflow(std::int64_t{-1});
    char* const bytes = static_cast<char*>(buffer);
    unsigned long done = 0;
    for (;;) {
        const unsigned long wanted = std::min(size - done, callLimit);
        const ::ssize_t count = Posix::retry([&] { return ::read(descriptorOf(handle), bytes + done, wanted); });
        if (count == -1)
            return -1;
        done += static_cast<unsigned long>(count);
        // A short count is the end of the file, or all that a pipe has: it would wait if it were asked again.
        if (static_cast<unsigned long>(count) < wanted || done == size)
            return static_cast<std::int64_t>(done);
    }
}

std::int64_t writeFile(std::int64_t handle, void const* buffer, unsigned long size)
{
    if (size > sizeLimit)
        return refuseOverflow(std::int64_t{-1});
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

bool shareBlocks(std::int64_t source, std::int64_t target)
{
    const int from = descriptorOf(source);
    const int to = descriptorOf(target);
    if (::ioctl(to, FICLONE, from) != 0)
        return false;
    // As large as the source was at that moment; what has been appended since is left to the caller.
    const ::off_t end = ::lseek(to, 0, SEEK_END);
    if (end != -1 && ::lseek(from, end, SEEK_SET) != -1)
        return true;
    ::lseek(to, 0, SEEK_SET);  // the caller then writes the same bytes over the shared ones
    return false;
}

void copyRange(std::int64_t source, std::int64_t target)
{
    const int from = descriptorOf(source);
    const int to = descriptorOf(target);
    // A signal or the limit of the call makes it short, so only 0 and a failure end it.
    while (Posix::retry([&] { return ::copy_file_range(from, nullptr, to, nullptr, callLimit, 0); }) > 0)
        continue;
}

// The position is asked for first, so that a move beyond the limit can be taken back.
std::optional<std::int32_t> seekFile(std::int64_t handle, long offset, OsFileTypes::SeekMode mode)
{
    constexpr std::optional<std::int32_t> failure;
    if (offset > positionLimit || offset < INT32_MIN)
        return refuseOverflow(failure);
    const int file = descriptorOf(handle);
    const ::off_t before = ::lseek(file, 0, SEEK_CUR);
    const ::off_t after = before != -1 ? ::lseek(file, offset, originOf(mode)) : -1;
    if (after == -1)
        return failure;
    if (after > positionLimit) {
        ::lseek(file, before, SEEK_SET);
        return refuseOverflow(failure);
    }
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(after));
}

bool setFileSize(std::int64_t handle, unsigned long size)
{
    // Intended: 0xFFFFFFFF itself is refused too, on every system. Do not mend: that position stands for a failure.
    if (size >= positionLimit)
        return refuseOverflow(false);
    const int file = descriptorOf(handle);
    const ::off_t length = static_cast<::off_t>(size);
    return ::lseek(file, length, SEEK_SET) != -1 && Posix::retry([&] { return ::ftruncate(file, length); }) == 0;
}

// close() reports the error of a delayed write, but releases the descriptor all the same. So a duplicate is closed
// first: if that reports an error, our descriptor is still open, and the caller can throw and try again. Without a
// free descriptor for the duplicate the file is closed directly, and an error can no longer keep it open.
CloseResult closeFile(std::int64_t handle)
{
    const int file = descriptorOf(handle);
    const int duplicate = ::fcntl(file, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    const bool isUnknown = duplicate == -1 && errno == EBADF;
    // EINTR: the system has released the descriptor and has nothing to report.
    if (isUnknown || (duplicate != -1 && ::close(duplicate) != 0 && errno != EINTR))
        return CloseResult::Kept;
    const bool isClosed = ::close(file) == 0 || errno == EINTR;
    return duplicate != -1 || isClosed ? CloseResult::Closed : CloseResult::ClosedWithError;
}

void dropFile(std::int64_t handle) noexcept
{
    if (handle != closedHandle)
        ::close(descriptorOf(handle));
}

}  // namespace Vn::System
