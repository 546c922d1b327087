// osprocesslinux.cpp (Windows form: osprocesswindows.cpp)
//
// A program is started in two steps, through a process between:
//
//     this process  --clone-->  the one between  --clone-->  the new one, which becomes the program
//
// The one between ends as soon as the new one has become the program, so the program is an orphan: the system's first
// process collects it when it ends, and no zombie is left whatever becomes of its OsProcess. What we keep is its
// descriptor (pidfd), which is readable from its end on, and which no later process of the same number can be taken for.
//
// Neither step copies memory. Both new processes run in ours (CLONE_VM), each on a stack of its own, and whoever starts
// one stands still until it has become a program or has ended (CLONE_VFORK). So a start costs the same whatever this
// process holds, and a system call's error comes back through a field. The one between shares our table of descriptors
// as well (CLONE_FILES), so that the system puts the program's descriptor straight into it; the new process has a copy
// of that table, in which it closes what isn't the program's.
//
// The other threads of this process go on meanwhile. Therefore the new processes make system calls only, on memory that
// the start has made for them (Launch), with all signals blocked, and handlers of their own, which they reset before the
// signals come back. Both have no signal for their end, so that neither a handler for SIGCHLD nor a wait for any
// child in another thread notices the one between. If that is killed, the new process may still run in our memory: the
// start fails, and Launch stays for ever.
//
// An orphan isn't always the first process's. Where this process is itself the first one of its system, or takes in
// orphans (PR_SET_CHILD_SUBREAPER), the program becomes our own child. Where our children live in another PID namespace
// (unshare(CLONE_NEWPID)), the first of them is the first process there and all others end with it, so the one between
// becomes the program itself. In either case the record collects it, and the record of one that outlives its OsProcess is
// kept for the next start (LetGo).
//
// Systems before Linux 5.4 and emulators start copies of this process instead: osprocesskeeperlinux.cpp.
#include <base/osprocess_p.h>

#include <base/exsyserror.h>
#include <base/osprocesslinux_p.h>

#include <poll.h>
#include <sched.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstddef>
#include <memory>

/// clone() by the name under which no tool has put itself before it: the thread sanitizer does, for copies of a process
/// only.
extern "C" int __clone(int (*body)(void*), void* stack, int flags, void* argument, ...) noexcept;

namespace Vn
{
namespace
{
using Posix::Descriptor;
using ProcessStart::fail;
using ProcessStart::Started;

constexpr char const* sourceName = "src/base/osprocesswindows";

/// Each of the two stacks. A few calls go there and a signal's frame, which may be 20 KB on some processors.
constexpr std::size_t stackSize = 64 * 1024;

/// What the processes of a start share. Throws std::bad_alloc.
struct Launch
{
    explicit Launch(char const* const* argv) : program(argv), stacks(new Stack[2]) {}

    struct alignas(16) Stack
    {
        char bytes[stackSize];

        /// Where it begins: all systems that we know fill it downwards.
        void* getTop() { return bytes + stackSize; }
    };

    ProcessStart::Program program;
    std::unique_ptr<Stack[]> stacks;  ///< of the one between and the new one
    ::sigset_t signals;               ///< which the program is to have blocked

    // Written by the new processes and by the system for them.
    int between = -1;         ///< descriptor of the process between
    int started = -1;         ///< descriptor of the program
    int error = 0;            ///< why there is no program
    bool isCloned = false;    ///< the error, if there is one, is that of the program and not of its process
    bool isDirect = false;    ///< the one between becomes the program
    bool isFollowed = false;  ///< the one between has seen what became of the new process

    Launch* before = nullptr;  ///< in what abandon() keeps
};

// --- in the new processes --------------------------------------------------------------------------------------------

VN_UNCHECKED int becomeProgram(void* argument)
{
    auto& launch = *static_cast<Launch*>(argument);
    launch.isCloned = true;
    launch.error = launch.program.become(launch.signals);
    return 127;
}

/// The table of descriptors is still ours here, and the program's start changes it: so it becomes a copy first.
VN_UNCHECKED int becomeProgramHere(Launch& launch)
{
    launch.isDirect = true;
    if (::syscall(SYS_unshare, CLONE_FILES) == 0)
        return becomeProgram(&launch);
    launch.error = errno;
    return 127;
}

VN_UNCHECKED int beBetween(void* argument)
{
    auto& launch = *static_cast<Launch*>(argument);
    if (::syscall(SYS_getppid) == 0)  // our number means nothing in this process's PID namespace
        return becomeProgramHere(launch);
    const int child = __clone(becomeProgram, launch.stacks[1].getTop(), CLONE_VM | CLONE_VFORK | CLONE_PIDFD,
                              &launch, &launch.started);
    if (child == -1) {
        launch.error = errno;
        launch.started = -1;  // the system may have written there, but has taken it back
    } else if (launch.error != 0) {
        ::syscall(SYS_wait4, child, nullptr, __WALL, nullptr);
    }
    launch.isFollowed = true;
    return 0;
}

// --- in this process -------------------------------------------------------------------------------------------------

/// `waitid` for a process that a descriptor names, whatever signal it has for its end.
int waitFor(Descriptor const& process, int options)
{
    ::siginfo_t state;
    state.si_pid = 0;
    const int result = Posix::retry(
        [&] { return ::waitid(P_PIDFD, static_cast<::id_t>(process.get()), &state, WEXITED | __WALL | options); });
    return result == 0 ? state.si_pid : -1;
}

/// True if it is our own child and runs. If it is and has ended, this collects it.
bool isOursAndRuns(Started& started)
{
    if (started.keeper == 0)
        return waitFor(started.end, WNOHANG) == 0;
    if (::waitpid(started.keeper, nullptr, WNOHANG) == 0)
        return true;
    started.keeper = 0;  // the number may become another one's
    return false;
}

/// For a program that has ended.
void collect(Started& started)
{
    if (started.keeper != 0)  // ends next
        Posix::retry([&] { return ::waitpid(started.keeper, nullptr, 0); });
    isOursAndRuns(started);
}

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
        if (isOursAndRuns(*started))
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

/// Keeps for ever what a process may still use.
void abandon(std::unique_ptr<Launch> launch)
{
    static constinit std::atomic<Launch*> last = nullptr;
    launch->before = last.exchange(launch.get());
    launch.release();
}

/// Whether a start beside our memory is possible: `waitid` has known descriptors of processes since Linux 5.4, later than
/// all else that it takes. What a newer system says of this number is EBADF.
bool knowsProcessDescriptors()
{
    return Posix::retry([] { return ::waitid(P_PIDFD, INT_MAX, nullptr, WEXITED | WNOHANG); }) == -1 &&
           errno == EBADF;
}

/// How a system or an emulator that lacks a call, or some of its flags, refuses it; or a filter of system calls.
bool meansUnknown(int error)
{
    return error == ENOSYS || error == EINVAL || error == EPERM;
}

enum class Outcome
{
    isRunning,
    failed,  ///< `errno` says why
    impossible
};

Outcome failed(int error)
{
    errno = error;
    return Outcome::failed;
}

/// What became of a launch whose process between was made.
Outcome follow(std::unique_ptr<Launch> launch, Started& started)
{
    Descriptor between(launch->between);
    if (launch->isDirect && launch->error == 0) {
        started.end.reset(between.release());
        return Outcome::isRunning;
    }
    waitFor(between, 0);
    if (!launch->isDirect && !launch->isFollowed) {
        abandon(std::move(launch));
        return failed(ECHILD);
    }
    started.end.reset(launch->started);
    if (launch->error == 0)
        return Outcome::isRunning;
    started.end.reset();
    return !launch->isCloned && meansUnknown(launch->error) ? Outcome::impossible : failed(launch->error);
}

Outcome startBesideMemory(char const* const* argv, Started& started)
{
    if (!knowsProcessDescriptors())
        return Outcome::impossible;
    auto launch = std::make_unique<Launch>(argv);
    const ProcessStart::SignalsBlocked signals;
    launch->signals = signals.getBefore();
    const int between = __clone(beBetween, launch->stacks[0].getTop(),
                                CLONE_VM | CLONE_VFORK | CLONE_FILES | CLONE_PIDFD, launch.get(), &launch->between);
    if (between == -1)
        return meansUnknown(errno) ? Outcome::impossible : Outcome::failed;
    return follow(std::move(launch), started);
}

/// False with `errno` set.
bool startProgram(char const* const* argv, Started& started)
{
    if (argv == nullptr || argv[0] == nullptr)
        return fail(EINVAL);
    const Outcome outcome = startBesideMemory(argv, started);
    return outcome == Outcome::impossible ? ProcessStart::startWithKeeper(argv, started)
                                          : outcome == Outcome::isRunning;
}

class OsProcessPosix : public OsProcessImp
{
public:
    explicit OsProcessPosix(char const* const* argv) : _started(new Started)
    {
        collectEnded();
        if (!startProgram(argv, *_started))
            throw ExSysErrorWindows(sourceName, __LINE__);
    }

    void wait() override
    {
        ::pollfd ended{_started->end.get(), POLLIN, 0};
        if (Posix::retry([&] { return ::poll(&ended, 1, -1); }) == -1)
            throw ExSysErrorWindows(sourceName, __LINE__);
        if ((ended.revents & (POLLIN | POLLHUP)) == 0) {
            errno = EBADF;  // somebody else has closed it
            throw ExSysErrorWindows(sourceName, __LINE__);
        }
        collect(*_started);
    }

private:
    StartedPtr _started;
};
}  // namespace

ObjPtrRet<OsProcessImp> System::startProcess(char const* const* argv)
{
    return ObjPtrRet<OsProcessImp>(new OsProcessPosix(argv));
}

}  // namespace Vn
