// threadlogoutputsposix.cpp (Windows form: threadlogoutputswindows.cpp)
//
// A file is replaced below the logger: its descriptor gets the new file in one step (dup3), so that a line goes to the one
// or to the other, and nothing above notices. The descriptor is found among those of the process as one that appends to the
// file that was opened by that name.
//
// The layer has a descriptor of its own for each of the logger's files. A crash writes through it, since the logger's stream
// has a buffer that may be half full and a lock that may be held. Everything between appendTo() and readTailOf() is called
// from signal handlers and so makes system calls alone; reopenFile() is called by programs and may allocate.
//
// The rules for a new file are the logger's own: no link where there was none, a plain file, and the user's own under one name
// if the one before was. Without them another user, in a folder that all can write to, could point the log of this one at a
// file that only this one may change.
#include <threadlog/threadlogoutputs_p.h>

#include <dirent.h>
#include <fcntl.h>
#include <limits.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>

namespace Vn
{
namespace
{
/// A signal between two of our calls must not cost a line.
template <class Call>
auto retry(Call const& call)
{
    auto result = call();
    while (result == -1 && errno == EINTR)
        result = call();
    return result;
}

constexpr int noFile = -1;

/// Closed at the end of the block, unless it was released.
class Descriptor
{
public:
    explicit Descriptor(int file) : _file(file) {}
    ~Descriptor()
    {
        if (_file != noFile)
            ::close(_file);
    }
    Descriptor(Descriptor const&) = delete;
    Descriptor& operator=(Descriptor const&) = delete;

    int get() const { return _file; }
    bool isOpen() const { return _file != noFile; }
    int release() { return std::exchange(_file, noFile); }

private:
    int _file;
};

bool isSameFile(struct ::stat const& one, struct ::stat const& other)
{
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

/// Nobody else has it, and nothing else is called the same.
bool isOwnAlone(struct ::stat const& status)
{
    return status.st_uid == ::geteuid() && status.st_nlink == 1;
}

/// What isn't a standard descriptor: these belong to whoever started the program.
int moveBeyondStandard(int file)
{
    if (file < 0 || file > STDERR_FILENO)
        return file;
    const Descriptor low(file);
    return ::fcntl(file, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
}

/// Without waiting; `flags` say whether to read as well.
int openToAppend(std::string const& path, int flags)
{
    const int all = O_APPEND | O_NONBLOCK | O_NOCTTY | O_CLOEXEC | flags;
    return moveBeyondStandard(retry([&] { return ::open(path.c_str(), all, 0666); }));
}

/// To read as well, where that is allowed: a file that may only be written has no tail to look at.
int openToAppendAndRead(std::string const& path, int flags)
{
    const int file = openToAppend(path, O_RDWR | flags);
    return file != noFile ? file : openToAppend(path, O_WRONLY | flags);
}

/// As the logger has its files.
void makeBlocking(int file)
{
    ::fcntl(file, F_SETFL, ::fcntl(file, F_GETFL) & ~O_NONBLOCK);
}

constexpr char const* notAlone = "not a file of this user alone";

/// The folder where a dangling link wants its file. The system has followed the link, so it isn't endless.
std::filesystem::path getTargetFolder(std::filesystem::path path)
{
    std::error_code failure;
    for (auto target = std::filesystem::read_symlink(path, failure); !failure;
         target = std::filesystem::read_symlink(path, failure))
        path = path.parent_path() / target;
    return path.has_parent_path() ? path.parent_path() : ".";
}

/// The logger's own descriptor: the process's first one that appends to that file, but for `ours`.
/// Read from the kernel's own list, so that it costs nothing while nobody rotates. Two outputs may share one file; both then have
/// descriptors, and each call finds the first that still has it, so the second output is replaced by the second call.
int findLoggersFile(struct ::stat const& wanted, int ours)
{
    const std::unique_ptr<::DIR, int (*)(::DIR*)> folder(::opendir("/proc/self/fd"), ::closedir);
    if (folder == nullptr)
        return noFile;
    while (struct ::dirent const* const entry = ::readdir(folder.get())) {
        int file = noFile;
        std::from_chars(entry->d_name, entry->d_name + std::strlen(entry->d_name), file);
        struct ::stat status = {};
        if (file > STDERR_FILENO && file != ours && ::fstat(file, &status) == 0 && isSameFile(status, wanted) &&
            (::fcntl(file, F_GETFL) & O_APPEND) != 0)
            return file;
    }
    return noFile;
}
}  // namespace

/// The C library's words for it.
std::string ThreadLogOutputs::getErrorText(int error)
{
    return error != 0 ? std::generic_category().message(error) : std::string();
}

/// By trying once more what the logger tried. It refuses more than the system does: a default file that is a link, isn't the
/// user's own, or has further names. Nothing is made behind a link, which may be another user's.
std::string ThreadLogOutputs::getOpenFailure(std::string const& path)
{
    if (const Descriptor file(openToAppend(path, O_WRONLY)); file.isOpen())
        return notAlone;
    if (errno != ENOENT)
        return getErrorText(errno);
    if (isSymlink(path))
        return ::faccessat(AT_FDCWD, getTargetFolder(path).c_str(), W_OK | X_OK, AT_EACCESS) == 0
                   ? notAlone
                   : getErrorText(errno);
    const Descriptor file(openToAppend(path, O_WRONLY | O_CREAT | O_NOFOLLOW));
    return file.isOpen() ? "it couldn't be opened at first" : getErrorText(errno);
}

bool ThreadLogOutputs::isSymlink(std::string const& path)
{
    struct ::stat status = {};
    return ::lstat(path.c_str(), &status) == 0 && S_ISLNK(status.st_mode);
}

/// Asked when the file is opened: whoever moves it away may have given it a second name, or none.
bool ThreadLogOutputs::isAlone(std::intptr_t handle)
{
    struct ::stat status = {};
    return ::fstat(static_cast<int>(handle), &status) == 0 && isOwnAlone(status);
}

std::intptr_t ThreadLogOutputs::openHandle(std::string const& path)
{
    struct ::stat status = {};
    if (::stat(path.c_str(), &status) != 0)
        return noFile;
    // Reading from a pipe as well would make us one of those it waits for. It stays non-blocking: it is for crashes alone.
    return S_ISREG(status.st_mode) ? openToAppendAndRead(path, 0) : openToAppend(path, O_WRONLY);
}

void ThreadLogOutputs::closeHandle(std::intptr_t handle)
{
    ::close(static_cast<int>(handle));
}

/// To a file in one call as a rule, so that lines of several processes don't mix; a short write goes on where it ended.
///
/// A crash may not wait for ever for a terminal or a pipe, so it asks before it writes. A pipe counts as ready with room for
/// PIPE_BUF bytes, and standard output, which others share, stays blocking: it would wait for the room for a longer text.
/// So a line that is longer may mix with another process's, or end early. The second is for all lines of a handle, as
/// thousands may follow.
bool ThreadLogOutputs::appendTo(std::intptr_t handle, std::string_view text, bool& isStuck)
{
    const int file = static_cast<int>(handle);
    struct ::stat status = {};
    const bool isFile = ::fstat(file, &status) == 0 && S_ISREG(status.st_mode);
    const std::size_t most = isFile ? text.size() : PIPE_BUF;
    while (!text.empty()) {
        constexpr int aSecond = 1000;
        struct ::pollfd wanted = {file, POLLOUT, 0};
        if (retry([&] { return ::poll(&wanted, 1, isStuck ? 0 : aSecond); }) == 0) {
            isStuck = true;
            return false;
        }
        const ::ssize_t done = retry([&] { return ::write(file, text.data(), std::min(text.size(), most)); });
        if (done <= 0)
            return false;
        text.remove_prefix(static_cast<std::size_t>(done));
    }
    return true;
}

void ThreadLogOutputs::appendToStandardOutput(std::string_view text)
{
    static constinit bool isStuck = false;  // one thread at a time
    appendTo(STDOUT_FILENO, text, isStuck);
}

/// Nothing of a pipe or a device, which keep nothing.
std::size_t ThreadLogOutputs::readTailOf(std::intptr_t handle, char* bytes, std::size_t size)
{
    const int file = static_cast<int>(handle);
    struct ::stat status = {};
    if (::fstat(file, &status) != 0 || !S_ISREG(status.st_mode))
        return 0;
    const ::off_t start =
        status.st_size > static_cast<::off_t>(size) ? status.st_size - static_cast<::off_t>(size) : 0;
    const ::ssize_t done = retry([&] { return ::pread(file, bytes, size, start); });
    return done > 0 ? static_cast<std::size_t>(done) : 0;
}

/// Our own descriptor tells which file the logger has: both were opened by one name, and are replaced together.
/// The banner comes before the logger's descriptor is replaced, so that no line of another thread gets in front of it. Each
/// failure leaves the logger with the file that it had.
std::string ThreadLogOutputs::reopenFile(Output& output, std::string_view banner)
{
    struct ::stat status = {}, before = {};
    if (output.handle == closed)  // a pipe and a device need nothing
        return ::stat(output.path.c_str(), &status) == 0 && !S_ISREG(status.st_mode)
                   ? std::string()
                   : "it couldn't be opened a second time at the start";
    const Descriptor file(openToAppendAndRead(output.path, O_CREAT | (output.isLink ? 0 : O_NOFOLLOW)));
    if (!file.isOpen() || ::fstat(file.get(), &status) != 0)
        return getErrorText(errno);
    if (::fstat(static_cast<int>(output.handle), &before) != 0)
        return getErrorText(errno);
    if (!S_ISREG(status.st_mode) || !S_ISREG(before.st_mode))
        return {};
    if (isSameFile(status, before))  // first: further names of a file that stays are nobody's harm
        return {};
    if (output.isAlone && !isOwnAlone(status))
        return notAlone;
    const int loggers = findLoggersFile(before, static_cast<int>(output.handle));
    if (loggers == noFile)
        return "the logger's own file isn't found";
    makeBlocking(file.get());
    bool isStuck = false;  // a file never is
    if (status.st_size == 0)
        appendTo(file.get(), banner, isStuck);
    if (retry([&] { return ::dup3(file.get(), loggers, O_CLOEXEC); }) == -1)
        return getErrorText(errno);
    ::dup3(file.get(), static_cast<int>(output.handle), O_CLOEXEC);
    return {};
}

}  // namespace Vn
