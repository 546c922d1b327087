// osprocesslinux.cpp (Windows form: osprocesswindows.cpp)
#include <base/osprocess_p.h>

#include <base/exsyserror.h>
#include <base/osposix_p.h>

#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <memory>

namespace Vn
{
namespace
{
using Posix::Descriptor;

constexpr char const* sourceName = "src/base/osprocesswindows";

/// What the processes that take part in a start say to each other.
struct Message
{
    enum Kind
    {
        waiting,  ///< the new process is there and waits for `go`
        go,
        failed,  ///< `value` is the errno
        running  ///< the new process has become its program, or has ended
    };

    Kind kind;
    int value;
};

bool send(int channel, Message const& message)
{
    return Posix::retry([&] { return ::send(channel, &message, sizeof message, MSG_NOSIGNAL); }) == sizeof message;
}

/// False at the channel's end.
bool receive(int channel, Message& message)
{
    return Posix::retry([&] { return ::recv(channel, &message, sizeof message, 0); }) == sizeof message;
}

/// All signals blocked while it lives: no handler of the program may run in the copies of its process.
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
    ~SignalsBlocked() { restore(); }

    void restore() const { ::pthread_sigmask(SIG_SETMASK, &_before, nullptr); }

private:
    ::sigset_t _before;
};

// --- in the copies of the process: nothing but system calls ----------------------------------------------------------

/// Ends a copy with nothing of the program's: not even what a checking tool puts before `_exit`, such as the writing of
/// what stands in the streams, which the program itself will write.
[[noreturn]] void leave(int code)
{
    for (;;)
        ::syscall(SYS_exit_group, static_cast<long>(code));
}

/// A signal that waits must find no handler of the program. What is ignored stays so.
void resetHandlers()
{
    for (int number = 1; number < NSIG; ++number) {
        struct ::sigaction action;
        if (::sigaction(number, nullptr, &action) == 0 && action.sa_handler != SIG_IGN &&
            action.sa_handler != SIG_DFL) {
            action.sa_handler = SIG_DFL;
            action.sa_flags = 0;
            ::sigaction(number, &action, nullptr);
        }
    }
}

/// Everything above the standard streams ends with this program's text.
void closeOthersAtStart()
{
    if (::close_range(3, ~0u, CLOSE_RANGE_CLOEXEC) == 0)
        return;
    const long limit = ::sysconf(_SC_OPEN_MAX);  // an older system
    for (int number = 3; number < limit; ++number)
        ::fcntl(number, F_SETFD, FD_CLOEXEC);
}

[[noreturn]] void becomeProgram(int channel, char const* const* argv, SignalsBlocked const& signals)
{
    Message message{Message::waiting, ::getpid()};
    if (!send(channel, message) || !receive(channel, message) || message.kind != Message::go)
        leave(127);  // whoever started this is gone, or has given it up
    closeOthersAtStart();
    resetHandlers();
    signals.restore();
    ::execvp(argv[0], const_cast<char* const*>(argv));
    send(channel, {Message::failed, errno});
    leave(127);
}

/// A copy of this process, which stands still until the copy has become a program or has ended.
::pid_t forkAndStandStill()
{
    return static_cast<::pid_t>(
        ::syscall(SYS_clone, static_cast<long>(CLONE_VFORK | SIGCHLD), nullptr, nullptr, nullptr, nullptr));
}

/// Makes the child a child of the system's first process, which collects it when it ends: no zombie is left whatever
/// becomes of the object that stands for it.
[[noreturn]] void becomeParent(int channel, char const* const* argv, SignalsBlocked const& signals)
{
    const ::pid_t child = forkAndStandStill();
    if (child == 0)
        becomeProgram(channel, argv, signals);
    send(channel, child == -1 ? Message{Message::failed, errno} : Message{Message::running, 0});
    leave(0);
}

// --- in the program's own process ------------------------------------------------------------------------------------

/// A process that was started.
struct Started
{
    Descriptor process;
    Started* next = nullptr;  ///< among those that were let go while they ran

    /// Where this process is itself the first one of its system, or takes in orphans, what it has started is its own after
    /// all. Collects it there if it has ended, and tells whether it still runs.
    bool isOursAndRuns() const
    {
        ::siginfo_t state;
        state.si_pid = 0;
        return ::waitid(P_PIDFD, static_cast<::id_t>(process.get()), &state, WEXITED | WNOHANG) == 0 &&
               state.si_pid == 0;
    }
};

/// Processes of ours that nobody stands for any more and that are still to be collected. No lock: a child of fork, to
/// which none of them belongs, may find it in any state.
class LetGo
{
public:
    static void add(Started* started)
    {
        started->next = _first.load(std::memory_order_relaxed);
        // Release, so that whoever takes the chain sees what it leads to.
        while (!_first.compare_exchange_weak(started->next, started, std::memory_order_release,
                                             std::memory_order_relaxed))
            continue;
    }

    /// The whole chain; null if there is none.
    static Started* takeAll() { return _first.exchange(nullptr, std::memory_order_acquire); }

private:
    static inline constinit std::atomic<Started*> _first = nullptr;
};

/// Ends the record of a process, at once or when that has been collected.
struct LettingGo
{
    void operator()(Started* started) const
    {
        if (started->isOursAndRuns())
            LetGo::add(started);
        else
            delete started;
    }
};
using StartedPtr = std::unique_ptr<Started, LettingGo>;

void collectEnded()
{
    for (Started* started = LetGo::takeAll(); started != nullptr;) {
        Started* const next = started->next;
        LettingGo()(started);
        started = next;
    }
}

class OsProcessPosix : public OsProcessImp
{
public:
    explicit OsProcessPosix(char const* const* argv) : _started(new Started)
    {
        collectEnded();
        if (argv == nullptr || argv[0] == nullptr) {
            errno = EINVAL;
            throw ExSysErrorWindows(sourceName, __LINE__);
        }
        if (!start(argv))
            throw ExSysErrorWindows(sourceName, __LINE__);
    }

    /// A descriptor of a process is readable from its end on.
    void wait() override
    {
        ::pollfd ended{_started->process.get(), POLLIN, 0};
        if (Posix::retry([&] { return ::poll(&ended, 1, -1); }) == -1)
            throw ExSysErrorWindows(sourceName, __LINE__);
        _started->isOursAndRuns();
    }

private:
    /// False with `errno` set.
    bool start(char const* const* argv)
    {
        int ends[2];
        if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0)
            return false;
        Descriptor ours(ends[0]), theirs(ends[1]);
        const ::pid_t parent = forkParent(ours, theirs, argv);
        if (parent == -1)
            return false;
        theirs.reset();
        const bool isRunning = follow(ours.get());
        const int error = errno;
        if (!isRunning)
            send(ours.get(), {Message::failed, error});  // for a new process that still waits
        ours.reset();
        Posix::retry([parent] { return ::waitpid(parent, nullptr, 0); });
        return isRunning || fail(error);
    }

    static ::pid_t forkParent(Descriptor& ours, Descriptor& theirs, char const* const* argv)
    {
        const SignalsBlocked signals;
        const ::pid_t parent = ::fork();
        if (parent == 0) {
            ours.reset();
            becomeParent(theirs.get(), argv, signals);
        }
        return parent;
    }

    /// The new process waits until its descriptor is open here, so that its number can't have gone to another one.
    bool follow(int channel)
    {
        Message message;
        if (!receive(channel, message))
            return fail(ECHILD);  // it was ended from outside
        if (message.kind == Message::failed)
            return fail(message.value);
        if (message.kind != Message::waiting)
            return fail(ECHILD);
        _started->process.reset(static_cast<int>(::syscall(SYS_pidfd_open, message.value, 0)));
        if (!_started->process.isOpen())
            return false;
        if (!send(channel, {Message::go, 0}) || !receive(channel, message))
            return fail(ECHILD);
        return message.kind == Message::running || fail(message.value);
    }

    static bool fail(int error)
    {
        errno = error;
        return false;
    }

    StartedPtr _started;
};
}  // namespace

ObjPtrRet<OsProcessImp> System::startProcess(char const* const* argv)
{
    return ObjPtrRet<OsProcessImp>(new OsProcessPosix(argv));
}

}  // namespace Vn
