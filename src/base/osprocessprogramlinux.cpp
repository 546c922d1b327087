// osprocessprogramlinux.cpp: the last steps of a new process, for osprocesslinux.cpp and osprocesskeeperlinux.cpp.
//
//     in this process     Program's constructor: the candidates of the search in PATH, the arguments for a shell
//     in the new one      become(): close descriptors, reset signal handlers, restore the signal mask, execve()
//
// become() may run in a process that shares our memory while our other threads go on. Therefore it takes no lock,
// allocates no memory and calls the kernel directly (::syscall): a sanitizer wraps the C library's functions and
// keeps tables about the process, which the new one must not change. execvp() searches PATH with memory and wrappers
// of that kind, so the search is done here, by its rules.
#include <base/osprocesslinux_p.h>

#include <dirent.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <climits>
#include <cstddef>
#include <cstdlib>

extern "C" char** environ;

/// sigaction() by the name under which no tool has put itself before it. A tool's table of handlers is in the shared
/// memory, and a change there would be one for this process.
extern "C" int __sigaction(int number, struct ::sigaction const* action, struct ::sigaction* before) noexcept;

namespace Vn::ProcessStart
{
namespace
{
/// The errors of one candidate after which execvp() tries the next one.
bool isNoReasonToStop(int error)
{
    return error == ENOENT || error == EACCES || error == ENOTDIR || error == ESTALE || error == ENODEV ||
           error == ETIMEDOUT;
}

extern "C" VN_UNCHECKED void vnEndQuietly(int)
{
    leave(127);
}

/// The default action of these is to end the process with a core dump.
constexpr int withCore[] = {SIGQUIT, SIGILL, SIGTRAP, SIGABRT, SIGBUS, SIGFPE, SIGSEGV, SIGXCPU, SIGXFSZ, SIGSYS};

VN_UNCHECKED bool makesCore(int number)
{
    for (int known : withCore)
        if (number == known)
            return true;
    return false;
}

/// Removes the signal handlers before the signals are unblocked: a pending one would run our handler in our memory.
/// Ignored signals stay ignored. Signals that would dump a core end this process quietly instead: before Linux 5.16
/// the dump would kill every process that shares its memory. execve() gives the program the default action for each
/// handler.
VN_UNCHECKED void resetHandlers()
{
    for (int number = 1; number < NSIG; ++number) {
        struct ::sigaction action;
        if (__sigaction(number, nullptr, &action) != 0 || action.sa_handler == SIG_IGN)
            continue;
        const bool isHandled = action.sa_handler != SIG_DFL;
        action.sa_handler = makesCore(number) ? vnEndQuietly : SIG_DFL;
        action.sa_flags = 0;
        if (isHandled || action.sa_handler != SIG_DFL)
            __sigaction(number, &action, nullptr);
    }
}

/// Errors are ignored: a descriptor that is not open has nothing to close.
VN_UNCHECKED void closeOne(int number, Closing closing)
{
    if (closing == Closing::now)
        ::syscall(SYS_close, number);
    else
        ::syscall(SYS_fcntl, number, F_SETFD, FD_CLOEXEC);
}

/// The number that a file name spells; -1 for "." and "..".
VN_UNCHECKED int numberOf(char const* name)
{
    int number = -1;
    for (; *name >= '0' && *name <= '9'; ++name)
        number = (number == -1 ? 0 : number * 10) + (*name - '0');
    return number;
}

/// Closes what /proc lists as open, as the limit of descriptors may be a billion. False without /proc.
VN_UNCHECKED bool closeListed(unsigned first, Closing closing)
{
    const int list =
        static_cast<int>(::syscall(SYS_openat, AT_FDCWD, "/proc/self/fd", O_RDONLY | O_DIRECTORY | O_CLOEXEC, 0));
    if (list == -1)
        return false;
    alignas(::dirent) char entries[1024];
    for (;;) {
        const long size = ::syscall(SYS_getdents64, list, entries, sizeof entries);
        if (size <= 0) {
            ::syscall(SYS_close, list);
            return size == 0;
        }
        for (long at = 0; at < size;) {
            auto const* const entry = reinterpret_cast<::dirent const*>(entries + at);
            at += entry->d_reclen;
            const int number = numberOf(entry->d_name);
            if (number >= static_cast<int>(first) && number != list)
                closeOne(number, closing);
        }
    }
}
}  // namespace

// Three ways, from the fastest to the one that works everywhere: one call for the range, /proc, every possible
// number.
VN_UNCHECKED void closeFrom(unsigned first, Closing closing)
{
    // CLOSE_RANGE_CLOEXEC is Linux 5.11, the call itself 5.9.
    if (::syscall(SYS_close_range, first, ~0u, closing == Closing::atExec ? CLOSE_RANGE_CLOEXEC : 0) == 0 ||
        closeListed(first, closing))
        return;
    ::rlimit limit = {};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    for (unsigned number = first; number < limit.rlim_cur && number < INT_MAX; ++number)
        closeOne(static_cast<int>(number), closing);
}

// A loop, because a function that must not return may not rely on a filter of system calls to let this one through.
VN_UNCHECKED void leave(int code)
{
    for (;;)
        ::syscall(SYS_exit_group, static_cast<long>(code));
}

Program::Program(char const* const* argv) : _argv(argv)
{
    listPaths(argv[0]);
    _shellsArgv = {"/bin/sh", nullptr};
    for (char const* const* text = argv + 1; *text != nullptr; ++text)
        _shellsArgv.push_back(*text);
    _shellsArgv.push_back(nullptr);
}

/// The candidates, in the order of the search. A name with a separator is the only candidate; an empty entry of PATH
/// means the current directory.
void Program::listPaths(std::string const& name)
{
    if (name.empty())
        return;
    if (name.find('/') != std::string::npos) {
        _paths.push_back(name);
        return;
    }
    char const* const variable = std::getenv("PATH");
    const std::string folders = variable != nullptr ? variable : "/bin:/usr/bin";
    for (std::size_t begin = 0, end = 0; end != std::string::npos; begin = end + 1) {
        end = folders.find(':', begin);
        const std::string folder = folders.substr(begin, end - begin);
        if (folder.size() < PATH_MAX)
            _paths.push_back(folder.empty() ? name : std::string(folder).append("/").append(name));
    }
}

VN_UNCHECKED int Program::become(::sigset_t const& signals)
{
    closeFrom(3, Closing::atExec);
    resetHandlers();
    ::syscall(SYS_rt_sigprocmask, SIG_SETMASK, &signals, nullptr, NSIG / 8);
    return tryPaths();
}

// As execvp(): if one candidate may not be run and no other can, EACCES is reported rather than the last error.
VN_UNCHECKED int Program::tryPaths()
{
    int error = ENOENT;
    bool isDenied = false;
    for (std::string const& path : _paths) {
        tryPath(path.c_str());
        error = errno;
        if (!isNoReasonToStop(error))
            return error;
        isDenied |= error == EACCES;
    }
    return isDenied ? EACCES : error;
}

VN_UNCHECKED void Program::tryPath(char const* path)
{
    ::execve(path, const_cast<char* const*>(_argv), environ);
    if (errno != ENOEXEC)
        return;
    // No program and no "#!" line: a shell reads it, as execvp() has it.
    _shellsArgv[1] = path;
    ::execve(_shellsArgv[0], const_cast<char* const*>(_shellsArgv.data()), environ);
}

}  // namespace Vn::ProcessStart
