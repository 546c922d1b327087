// lgfileposix.cpp (Windows form: lgfilewindows.cpp)
//
// Every file is opened for appending: the kernel then moves to the end and writes in one step, so that two processes never
// write over each other. A file that is begun anew is emptied in a step of its own, once it is known that no other level
// of this process has it open under another name.
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

bool readStatus(int file, struct ::stat& status)
{
    return Posix::retry([&] { return ::fstat(file, &status); }) == 0;
}

/// In a folder for temporary files anybody can put a link, a pipe, or a second name of a file that is worth more.
bool isOurOwn(struct ::stat const& status)
{
    return S_ISREG(status.st_mode) && status.st_uid == ::geteuid() && status.st_nlink == 1;
}

/// The same file open for reading as well, so that its end can be looked at; the one for writing if we may not read it.
int openToRead(char const* path, int flags, int file, struct ::stat const& status)
{
    const int both = Posix::openFile(path, (flags & ~(O_WRONLY | O_CREAT)) | O_RDWR);
    struct ::stat found = {};
    if (both != -1 && readStatus(both, found) && identityOf(found) == identityOf(status)) {
        ::close(file);
        return both;
    }
    if (both != -1)
        ::close(both);
    return file;
}

/// Opening mustn't wait for the reader of a pipe; writing to it may.
void letWritesWait(int file)
{
    const int flags = ::fcntl(file, F_GETFL);
    if (flags != -1)
        ::fcntl(file, F_SETFL, flags & ~O_NONBLOCK);
}

bool isLineEnd(int file, ::off_t place)
{
    char byte = '\n';
    Posix::retry([&] { return ::pread(file, &byte, 1, place); });
    return byte == '\n';
}

/// Keeps a pipe whose reader has gone from ending the process: the signal is for this thread alone, is blocked meanwhile,
/// and taken away if it wasn't waiting before.
class NoPipeSignal
{
public:
    NoPipeSignal()
    {
        ::sigset_t pending;
        ::sigemptyset(&_pipeSignal);
        ::sigaddset(&_pipeSignal, SIGPIPE);
        ::sigpending(&pending);
        _waited = ::sigismember(&pending, SIGPIPE) == 1;
        if (!_waited)
            ::pthread_sigmask(SIG_BLOCK, &_pipeSignal, &_before);
    }

    ~NoPipeSignal()
    {
        if (_waited)
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

    void pipeIsBroken() { _isBroken = true; }

private:
    ::sigset_t _pipeSignal;
    ::sigset_t _before;
    bool _waited = false;
    bool _isBroken = false;
};

/// As much as the system takes.
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

LogOutput::~LogOutput()
{
    if (isOpen())
        ::close(descriptorOf(_handle));
}

bool LogOutput::open(char const* path, LgFile::Origin origin)
{
    const bool isDefault = origin == LgFile::Origin::Default;
    const int flags =
        O_WRONLY | O_APPEND | O_CREAT | O_NONBLOCK | O_NOCTTY | O_CLOEXEC | (isDefault ? O_NOFOLLOW : 0);
    int file = Posix::openFile(path, flags, 0666);
    if (file == -1)
        return false;
    struct ::stat status = {};
    if (!readStatus(file, status) || (isDefault && !isOurOwn(status))) {
        ::close(file);
        return false;
    }
    _isRegular = S_ISREG(status.st_mode);
    if (_isRegular)
        file = openToRead(path, flags, file, status);
    else
        letWritesWait(file);
    _handle = file;
    _identity = identityOf(status);
    return true;
}

bool LogOutput::makeEmpty()
{
    return !_isRegular || Posix::retry([&] { return ::ftruncate(descriptorOf(_handle), 0); }) == 0;
}

std::optional<std::uint64_t> LogOutput::getSize() const
{
    struct ::stat status = {};
    if (!_isRegular || !readStatus(descriptorOf(_handle), status))
        return {};
    return static_cast<std::uint64_t>(status.st_size);
}

bool LogOutput::endsLineAt(std::uint64_t size) const
{
    return isLineEnd(descriptorOf(_handle), static_cast<::off_t>(size) - 1);
}

std::size_t LogOutput::append(std::string_view text)
{
    const int file = descriptorOf(_handle);
    if (_isRegular)
        return writeAll(file, text);
    NoPipeSignal guard;
    const std::size_t done = writeAll(file, text);
    if (done != text.size() && errno == EPIPE)
        guard.pipeIsBroken();
    return done;
}

bool LogOutput::takeBack(std::size_t size)
{
    const std::optional<std::uint64_t> whole = getSize();
    return whole && *whole >= size &&
           Posix::retry([&] { return ::ftruncate(descriptorOf(_handle), static_cast<::off_t>(*whole - size)); }) ==
               0;
}

bool isStandardOutputInsideLine()
{
    struct ::stat status = {};
    if (!readStatus(STDOUT_FILENO, status) || !S_ISREG(status.st_mode))
        return false;
    const ::off_t place = ::lseek(STDOUT_FILENO, 0, SEEK_CUR);
    if (place <= 0)
        return false;
    // It is rarely open for reading itself.
    const Posix::Descriptor readable(
        Posix::openFile("/proc/self/fd/1", O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    return !readable.isOpen() || !isLineEnd(readable.get(), place - 1);
}

}  // namespace Vn::System
