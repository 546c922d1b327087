// Private to osprocesskeeperlinux.cpp, osprocesslinux.cpp and osprocessprogramlinux.cpp.
#pragma once

// osprocesslinux.cpp explains how a start works; osprocesskeeperlinux.cpp is its fallback, and both end in
// osprocessprogramlinux.cpp.
#include <base/osposix_p.h>

#include <signal.h>
#include <sys/types.h>

#include <cerrno>
#include <string>
#include <vector>

/// Switches the sanitizers off in functions that run in a process which shares our memory but has its own stack. A
/// sanitizer would take their calls for calls of the waiting thread, and would keep records about the stack after it
/// is freed.
#if defined(__has_attribute) && __has_attribute(disable_sanitizer_instrumentation)
#    define VN_UNCHECKED __attribute__((disable_sanitizer_instrumentation))
#else
#    define VN_UNCHECKED __attribute__((no_sanitize("address", "thread", "undefined")))
#endif

namespace Vn::ProcessStart
{

/// What we hold of a program that was started.
struct ChildRecord
{
    Posix::Descriptor end;  ///< readable, or hung up, once the program has ended: its pidfd or a keeper's socket
    ::pid_t keeper = 0;     ///< process number of the keeper if that is our own child; otherwise 0
    ChildRecord* next = nullptr;  ///< in the list of the released children
};

/// Blocks all signals as long as it exists: no handler of this program may run in the processes of a start.
class SignalsBlocked
{
public:
    SignalsBlocked()
    {
        ::sigset_t all;
        ::sigfillset(&all);
        ::pthread_sigmask(SIG_SETMASK, &all, &_before);
    }
    SignalsBlocked(SignalsBlocked const&) = delete;
    SignalsBlocked& operator=(SignalsBlocked const&) = delete;
    ~SignalsBlocked() { ::pthread_sigmask(SIG_SETMASK, &_before, nullptr); }

    ::sigset_t const& getBefore() const { return _before; }

private:
    ::sigset_t _before;
};

/// What a new process is to become. The constructor does everything that allocates memory or reads the environment,
/// so the new process makes system calls only.
class Program
{
public:
    /// Keeps the pointer `argv`; the array holds at least one text. Throws std::bad_alloc.
    explicit Program(char const* const* argv);

    /// In the new process: closes all descriptors but 0 to 2, resets the signal handlers, blocks `signals` and runs
    /// the program. Returns only if the program can't be run, with the system's error.
    int become(::sigset_t const& signals);

private:
    void listPaths(std::string const& name);
    int tryPaths();
    void tryPath(char const* path);

    char const* const* _argv;
    std::vector<std::string> _paths;       ///< in the order of the search
    std::vector<char const*> _shellsArgv;  ///< for a script without "#!": "/bin/sh", the path, the arguments
};

enum class Closing
{
    now,
    atExec  ///< when the process runs another program
};

/// Closes all descriptors of the calling process from `first` on.
void closeFrom(unsigned first, Closing closing);

/// Ends the calling process and runs no code of this program: no exit handlers, and nothing that a sanitizer puts
/// before `_exit`. Buffered output belongs to the parent, which will flush it itself.
[[noreturn]] void leave(int code);

/// Starts a program by forks of this process, which works on every version of Linux. False, with `errno` set, if the
/// program can't be run. Throws std::bad_alloc.
bool startWithKeeper(char const* const* argv, ChildRecord& child);

/// Sets `errno`; the result is false.
inline bool fail(int error)
{
    errno = error;
    return false;
}

}  // namespace Vn::ProcessStart
