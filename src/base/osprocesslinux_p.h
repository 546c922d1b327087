// Private to osprocesskeeperlinux.cpp, osprocesslinux.cpp and osprocessprogramlinux.cpp.
#pragma once

// Private to osprocesslinux.cpp, which tells how a start works, to osprocesskeeperlinux.cpp, its fall-back, and to
// osprocessprogramlinux.cpp, which serves both.
#include <base/osposix_p.h>

#include <signal.h>
#include <sys/types.h>

#include <cerrno>
#include <string>
#include <vector>

/// For what runs in a process that shares this one's memory but has a stack of its own: the sanitizers would take its
/// calls for calls of the thread that waits, and would keep their notes about its stack when that is gone.
#if defined(__has_attribute) && __has_attribute(disable_sanitizer_instrumentation)
#    define VN_UNCHECKED __attribute__((disable_sanitizer_instrumentation))
#else
#    define VN_UNCHECKED __attribute__((no_sanitize("address", "thread", "undefined")))
#endif

namespace Vn::ProcessStart
{

/// A program that was started.
struct Started
{
    Posix::Descriptor
        end;  ///< readable, or hung up, from the program's end on: its own descriptor or a keeper's socket
    ::pid_t keeper = 0;       ///< number of the keeper where that is our own child; otherwise 0
    Started* next = nullptr;  ///< among those that were let go while they ran
};

/// All signals blocked while it lives: no handler of the program may run in the processes of a start.
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

/// What a new process is to become. The constructor does all that takes memory or looks at the environment, so that
/// nothing but system calls is left for the new process.
class Program
{
public:
    /// Keeps `argv`, which holds at least one text. Throws std::bad_alloc.
    explicit Program(char const* const* argv);

    /// In the new process: gives it descriptors 0 to 2 and no others, none of our handlers, and `signals` blocked, and
    /// becomes the program. Returns only if it can't be started, and then the system's error.
    int become(::sigset_t const& signals);

private:
    void listPaths(std::string const& name);
    int tryPaths();
    void tryPath(char const* path);

    char const* const* _argv;
    std::vector<std::string> _paths;       ///< in the order of the search
    std::vector<char const*> _shellsArgv;  ///< that of a shell which reads the program; its second text is the path
};

enum class Closing
{
    now,
    atExec  ///< with this program's text
};

/// Closes all descriptors of the calling process from `first` on.
void closeFrom(unsigned first, Closing closing);

/// Ends the calling process with nothing of the program's: not even what a checking tool puts before `_exit`, such as
/// the writing of what stands in the streams, which the program itself will write.
[[noreturn]] void leave(int code);

/// Starts a program on systems of any age, by copies of this process. False, with `errno` set, if it can't be started.
/// Throws std::bad_alloc.
bool startWithKeeper(char const* const* argv, Started& started);

/// For results that are false with `errno` set.
inline bool fail(int error)
{
    errno = error;
    return false;
}

}  // namespace Vn::ProcessStart
