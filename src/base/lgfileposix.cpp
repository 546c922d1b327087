// lgfileposix.cpp (Windows form: lgfilewindows.cpp)
//
// Every file is opened for appending: the kernel then moves to the end and writes in one step, so that two processes never
// write over each other. A file that is begun anew is emptied in a step of its own, once it is known that no other level
// of this process has it open under another name.
//
// Opening takes up to three steps. The file is opened for writing alone, without waiting: a pipe that nobody reads refuses.
// Its status is read from the descriptor and not from the path, which could lead elsewhere by then; a default file must be a
// regular file of our own. A regular file is then opened once more for reading as well, since the end of a shared file has to
// be looked at; if that gives another file, or none, the first descriptor stays.
//
// Pipes and devices differ in two ways: they have no size and no end to look at, and a pipe whose reader has gone would end the
// process with SIGPIPE, which NoPipeSignal prevents around the write.
#include <base/lgfile_p.h>

#include <base/osposix_p.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <ctime>

namespace Vn::System
{
namespace
{
int descriptorOf(std::intptr_t handle)
{
    return static_cast<int>(handle);
}

FileIdentity identityOf(struct ::stat const& status)
{
    return {static_cast<std::uint64_t>(status.st_dev), static_cast<std::uint64_t>(status.st_ino)};
}

std::optional<struct ::stat> readStatus(int file)
{
    struct ::stat status = {};
    if (Posix::retry([&] { return ::fstat(file, &status); }) != 0)
        return {};
    return status;
}

/// In a folder for temporary files anybody can put a symlink, a pipe, or a hard link to a file that must not be emptied.
bool isOurOwn(struct ::stat const& status)
{
    return S_ISREG(status.st_mode) && status.st_uid == ::geteuid() && status.st_nlink == 1;
}

/// Reopens a regular file for reading as well; returns `file` itself if that is refused or the path leads to another file by now.
int reopenToRead(char const* path, int flags, int file, struct ::stat const& status)
{
    const int both = Posix::openFile(path, (flags & ~(O_WRONLY | O_CREAT)) | O_RDWR);
    if (both == -1)
        return file;
    const std::optional<struct ::stat> found = readStatus(both);
    const bool isSame = found && identityOf(*found) == identityOf(status);
    ::close(isSame ? file : both);
    return isSame ? both : file;
}

/// Opening must not wait for the reader of a pipe; writing to it may.
void makeBlocking(int file)
{
    const int flags = ::fcntl(file, F_GETFL);
    if (flags != -1)
        ::fcntl(file, F_SETFL, flags & ~O_NONBLOCK);
}

/// True as well if the byte can't be read: a line end too many is not worth a look that fails.
bool isLineEnd(int file, ::off_t place)
{
    char byte = '\n';
    Posix::retry([&] { return ::pread(file, &byte, 1, place); });
    return byte == '\n';
}

/// Keeps a pipe whose reader has gone from ending the process. The kernel sends SIGPIPE to the writing thread, which blocks it
/// meanwhile, and afterwards takes it off the pending signals; unless one was pending before, which is the program's.
class NoPipeSignal
{
public:
    NoPipeSignal()
    {
        ::sigset_t pending;
        ::sigemptyset(&_pipeSignal);
        ::sigaddset(&_pipeSignal, SIGPIPE);
        ::sigpending(&pending);
        _wasPending = ::sigismember(&pending, SIGPIPE) == 1;
        if (!_wasPending)
            ::pthread_sigmask(SIG_BLOCK, &_pipeSignal, &_before);
    }

    ~NoPipeSignal()
    {
        if (_wasPending)
            return;
        const int error = errno;
        if (_isBroken) {
            const ::timespec atOnce = {};
            Posix::retry([&] { return ::sigtimedwait(&_pipeSignal, nullptr, &atOnce); });
        }
        ::pthread_sigmask(SIG_SETMASK, &_before, nullptr);
        errno = error;
    }

    NoPipeSignal(NoPipeSignal const&) = delete;
    NoPipeSignal& operator=(NoPipeSignal const&) = delete;

    /// The write has failed with EPIPE, so a signal is pending.
    void setBroken() { _isBroken = true; }

private:
    ::sigset_t _pipeSignal;
    ::sigset_t _before;
    bool _wasPending = false;
    bool _isBroken = false;
};

/// Returns how much the system took. A short write is no error: the rest follows, until the system refuses.
std::size_t writeAll(int file, std::string_view text)
{
    std::size_t done = 0;
    while (done < text.size()) {
        const ::ssize_t now = Posix::retry([&] { return ::write(file, text.data() + done, text.size() - done); });
        if (now <= 0)
            break;
        done += static_cast<std::size_t>(now);
    }
    return done;
}
}  // namespace

/// The result of close() is of no use here: each line was handed to the system when it was written.
LogOutput::~LogOutput()
{
    if (isOpen())
        ::close(descriptorOf(_handle));
}

/// False closes what was opened: a file that is refused is left as it was, unless opening has just made it.
bool LogOutput::open(char const* path, LgFile::Origin origin)
{
    const bool isDefault = origin == LgFile::Origin::Default;
    const int flags =
        O_WRONLY | O_APPEND | O_CREAT | O_NONBLOCK | O_NOCTTY | O_CLOEXEC | (isDefault ? O_NOFOLLOW : 0);
    int file = Posix::openFile(path, flags, 0666);
    if (file == -1)
        return false;
    const std::optional<struct ::stat> status = readStatus(file);
    if (!status || (isDefault && !isOurOwn(*status))) {
        ::close(file);
        return false;
    }
    _isRegular = S_ISREG(status->st_mode);
    if (_isRegular)
        file = reopenToRead(path, flags, file, *status);
    else
        makeBlocking(file);
    _handle = file;
    _identity = identityOf(*status);
    return true;
}

/// Pipes and devices have nothing to empty. The next write begins at the new end, as the file is open for appending.
bool LogOutput::makeEmpty()
{
    return !_isRegular || Posix::retry([&] { return ::ftruncate(descriptorOf(_handle), 0); }) == 0;
}

/// By the position of the end, which no write uses: each one appends. fstat() would do, but a file system that keeps fine time
/// stamps then writes a new one with the next line, which doubles what the line costs.
std::optional<std::uint64_t> LogOutput::getSize() const
{
    if (!_isRegular)
        return {};
    const ::off_t size = ::lseek(descriptorOf(_handle), 0, SEEK_END);
    return size >= 0 ? std::optional(static_cast<std::uint64_t>(size)) : std::nullopt;
}

/// The byte before that size: `size` is not 0.
bool LogOutput::endsLineAt(std::uint64_t size) const
{
    return isLineEnd(descriptorOf(_handle), static_cast<::off_t>(size) - 1);
}

/// A regular file can't raise SIGPIPE, and lines to files should not cost three more system calls each.
std::size_t LogOutput::append(std::string_view text)
{
    const int file = descriptorOf(_handle);
    if (_isRegular)
        return writeAll(file, text);
    NoPipeSignal guard;
    const std::size_t done = writeAll(file, text);
    if (done != text.size() && errno == EPIPE)
        guard.setBroken();
    return done;
}

/// Under the inter-process lock, so nobody writes between the question for the size and the cut.
bool LogOutput::removeFromEnd(std::size_t size)
{
    const std::optional<std::uint64_t> whole = getSize();
    return whole && *whole >= size &&
           Posix::retry([&] { return ::ftruncate(descriptorOf(_handle), static_cast<::off_t>(*whole - size)); }) ==
               0;
}

/// Where the end can't be looked at, a line counts as torn: an empty line does less harm than two lines in one.
std::optional<std::uint64_t> getStandardOutputEnd()
{
    const std::optional<struct ::stat> status = readStatus(STDOUT_FILENO);
    if (!status || !S_ISREG(status->st_mode))
        return {};
    // A file that is open for appending is written at its end, wherever its place is.
    const int flags = ::fcntl(STDOUT_FILENO, F_GETFL);
    const ::off_t end =
        flags != -1 && (flags & O_APPEND) != 0 ? status->st_size : ::lseek(STDOUT_FILENO, 0, SEEK_CUR);
    return end != -1 ? std::optional(static_cast<std::uint64_t>(end)) : std::nullopt;
}

std::optional<bool> isLineEndOfStandardOutput(std::uint64_t end)
{
    // It is rarely open for reading itself.
    const Posix::Descriptor readable(
        Posix::openFile("/proc/self/fd/1", O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!readable.isOpen())
        return {};
    return isLineEnd(readable.get(), static_cast<::off_t>(end) - 1);
}

}  // namespace Vn::System
