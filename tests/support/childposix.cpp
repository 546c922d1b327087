// childposix.cpp (Windows form: childwindows.cpp)
#include "child.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <stdexcept>

extern "C" char** environ;

namespace VnTest
{
namespace
{
struct Pipe
{
    Pipe()
    {
        if (::pipe2(ends.data(), O_CLOEXEC) != 0)
            throw std::runtime_error("no pipe");
    }
    std::array<int, 2> ends{};
};

std::vector<char*> pointersTo(std::vector<std::string> const& strings)
{
    std::vector<char*> pointers;
    for (std::string const& string : strings)
        pointers.push_back(const_cast<char*>(string.c_str()));
    pointers.push_back(nullptr);
    return pointers;
}

/// Reads once from `end` into `text`; false at its end.
bool readSome(int end, std::string& text)
{
    char buffer[4096];
    const ::ssize_t got = ::read(end, buffer, sizeof buffer);
    if (got > 0)
        text.append(buffer, static_cast<std::size_t>(got));
    return got > 0 || (got < 0 && errno == EINTR);
}

/// Reads both streams as they come, so that neither fills up while the other is waited for.
void readAll(int out, int err, ChildRun& run)
{
    std::array<::pollfd, 2> ends{{{out, POLLIN, 0}, {err, POLLIN, 0}}};
    while (ends[0].fd >= 0 || ends[1].fd >= 0) {
        if (::poll(ends.data(), ends.size(), -1) < 0)
            continue;
        if (ends[0].fd >= 0 && ends[0].revents != 0 && !readSome(out, run.out))
            ends[0].fd = -1;
        if (ends[1].fd >= 0 && ends[1].revents != 0 && !readSome(err, run.err))
            ends[1].fd = -1;
    }
}
/// Throws if the program can't be started.
::pid_t startProcess(std::vector<std::string> const& command, std::vector<std::string> const& environment, int out,
                     int err)
{
    ::posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_adddup2(&actions, out, 1);
    ::posix_spawn_file_actions_adddup2(&actions, err, 2);
    ::pid_t process = 0;
    const int failure = ::posix_spawn(&process, command[0].c_str(), &actions, nullptr, pointersTo(command).data(),
                                      pointersTo(environment).data());
    ::posix_spawn_file_actions_destroy(&actions);
    if (failure != 0)
        throw std::runtime_error("can't start " + command[0]);
    return process;
}

void waitFor(::pid_t process, ChildRun& run)
{
    int status = 0;
    while (::waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    run.crashed = WIFSIGNALED(status);
    run.exitCode = run.crashed ? -1 : WEXITSTATUS(status);
}
}  // namespace

#ifdef VN_PROGRAM_SUFFIX
char const* const programSuffix = VN_PROGRAM_SUFFIX;
#else
char const* const programSuffix = "";
#endif

std::vector<std::string> getOwnEnvironment()
{
    std::vector<std::string> entries;
    for (char** entry = environ; *entry != nullptr; ++entry)
        entries.emplace_back(*entry);
    return entries;
}

ChildRun runProcess(std::vector<std::string> const& command, std::vector<std::string> const& environment)
{
    const Pipe out;
    const Pipe err;
    const ::pid_t process = startProcess(command, environment, out.ends[1], err.ends[1]);
    ::close(out.ends[1]);
    ::close(err.ends[1]);
    ChildRun run;
    readAll(out.ends[0], err.ends[0], run);
    ::close(out.ends[0]);
    ::close(err.ends[0]);
    waitFor(process, run);
    return run;
}

ChildRun runProcessOnTerminal(std::vector<std::string> const& command, std::vector<std::string> const& environment,
                              unsigned short columns)
{
    const int ours = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    char path[PATH_MAX];
    if (ours < 0 || ::grantpt(ours) != 0 || ::unlockpt(ours) != 0 || ::ptsname_r(ours, path, sizeof path) != 0)
        throw std::runtime_error("no terminal");
    const int theirs = ::open(path, O_RDWR | O_NOCTTY | O_CLOEXEC);
    ::termios settings = {};
    ::tcgetattr(theirs, &settings);
    ::cfmakeraw(&settings);
    ::tcsetattr(theirs, TCSANOW, &settings);
    const ::winsize size = {24, columns, 0, 0};
    ::ioctl(theirs, TIOCSWINSZ, &size);

    const ::pid_t process = startProcess(command, environment, theirs, theirs);
    ::close(theirs);
    ChildRun run;
    while (readSome(ours, run.out)) {  // until the last one who has the other side closes it
    }
    ::close(ours);
    waitFor(process, run);
    return run;
}

std::string getProgramPath()
{
    return getProgramFile() + programSuffix;
}

std::string getProgramFile()
{
    char path[PATH_MAX];
    const ::ssize_t length = ::readlink("/proc/self/exe", path, sizeof path);
    return std::string(path, length > 0 ? static_cast<std::size_t>(length) : 0);
}

}  // namespace VnTest
