// osprocesslinux.cpp (Windows form: osprocesswindows.cpp)
//
// A start has two steps, through an intermediate process:
//
//     this process  --clone-->  intermediate process  --clone-->  new process, which runs the program
//
// Orphans. The intermediate process exits as soon as the new one runs the program, so the program is an orphan. The
// system's first process collects it, and it leaves no zombie, whatever becomes of its OsProcess.
//
// The descriptor. We keep the program's pidfd. It becomes readable when the program ends, and it never refers to a
// later process of the same number. wait() is a poll() on it.
//
// No copies. Both new processes run in our memory (CLONE_VM), each on its own stack, and the process that clones is
// suspended until the new one has run a program or exited (CLONE_VFORK). So a start takes the same time however much
// memory this process holds, and the error of a system call comes back in a field of Launch. The intermediate process
// also shares our descriptor table (CLONE_FILES), so the system puts the program's pidfd directly into it. The new
// process has a copy of that table, in which it closes what is not meant for the program.
//
// Concurrency. Our other threads go on meanwhile. The new processes therefore make system calls only, on memory that
// was prepared for them (Launch). All signals are blocked in them, and they reset the signal handlers before they
// restore the mask. Neither sends a signal when it exits, so no SIGCHLD handler and no wait for any child in another
// thread sees the intermediate process. If that one is killed, the new process may still run in our memory: the start
// fails, and Launch is never freed.
//
// Own children. A program is our own child after all in two cases. If this process is the first one of its system, or
// adopts orphans (PR_SET_CHILD_SUBREAPER), the program falls to us. If our children live in another PID namespace
// (unshare(CLONE_NEWPID)), the first of them must not exit before the others, so the intermediate process runs the
// program itself. In both cases we collect it: in wait(), or, if the program outlives its OsProcess, at the next
// start (ReleasedChildren).
//
// Systems before Linux 5.4, emulators and filters of system calls that lack one of these calls get
// osprocesskeeperlinux.cpp.
#include <base/osprocess_p.h>

#include <base/exsyserror.h>
#include <base/osprocesslinux_p.h>

#include <fcntl.h>
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

/// clone() by a name that no sanitizer wraps: the thread sanitizer's wrapper of clone() expects a forked process.
extern "C" int __clone(int (*body)(void*), void* stack, int flags, void* argument, ...) noexcept;

namespace Vn
{
namespace
{
using Posix::Descriptor;
using ProcessStart::ChildRecord;
using ProcessStart::fail;

constexpr char const* sourceName = "src/base/osprocesswindows";

/// Bytes of each stack. It holds a few calls and the frame of a signal, which takes up to 20 KB on some processors.
constexpr std::size_t stackSize = 64 * 1024;

/// The memory that the processes of a start share. The constructor throws std::bad_alloc.
struct Launch
{
    explicit Launch(char const* const* argv) : program(argv), stacks(new Stack[2]) {}

    struct alignas(16) Stack
    {
        char bytes[stackSize];

        /// Where an empty stack begins: it grows downwards.
        void* getTop() { return bytes + stackSize; }
    };

    ProcessStart::Program program;
    std::unique_ptr<Stack[]> stacks;  ///< of the intermediate process and of the new one
    ::sigset_t signals;               ///< the mask of the program

    // Written by the new processes, and by the system on their behalf.
    int intermediate = -1;    ///< pidfd of the intermediate process
    int started = -1;         ///< pidfd of the program
    int error = 0;            ///< why the program doesn't run
    bool isCloned = false;    ///< the new process existed, so an error is about the program and not about cloning
    bool isDirect = false;    ///< the intermediate process runs the program itself
    bool isFollowed = false;  ///< the intermediate process has seen how the new one fared

    Launch* before = nullptr;  ///< in the list of abandon()
};

// --- in the new processes ------------------------------------------------------------------------------------------

VN_UNCHECKED int becomeProgram(void* argument)
{
    auto& launch = *static_cast<Launch*>(argument);
    launch.isCloned = true;
    launch.error = launch.program.become(launch.signals);
    return 127;
}

/// In the intermediate process, which still shares our descriptor table: running the program would close our
/// descriptors, so it takes a copy of the table first.
VN_UNCHECKED int becomeProgramHere(Launch& launch)
{
    launch.isDirect = true;
    if (::syscall(SYS_unshare, CLONE_FILES) == 0)
        return becomeProgram(&launch);
    launch.error = errno;
    return 127;
}

VN_UNCHECKED int beIntermediate(void* argument)
{
    auto& launch = *static_cast<Launch*>(argument);
    if (::syscall(SYS_getppid) == 0)  // our parent is in another PID namespace
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

// --- in this process -----------------------------------------------------------------------------------------------

/// Waits for the process of a pidfd, also one that sends no signal when it exits (__WALL). Its number, 0 if it runs
/// and `options` has WNOHANG, -1 if it is not our child.
int waitFor(Descriptor const& process, int options)
{
    ::siginfo_t state;
    state.si_pid = 0;
    const int result = Posix::retry(
        [&] { return ::waitid(P_PIDFD, static_cast<::id_t>(process.get()), &state, WEXITED | __WALL | options); });
    return result == 0 ? state.si_pid : -1;
}

/// Collects the child if it has ended. False if it is our own child and still runs; true if nothing is left to
/// collect, also for a program that is not our child.
bool collectIfEnded(ChildRecord& child)
{
    if (child.keeper == 0)
        return waitFor(child.end, WNOHANG) != 0;
    if (::waitpid(child.keeper, nullptr, WNOHANG) == 0)
        return false;
    child.keeper = 0;  // the system may give the number to another process
    return true;
}

/// Collects a child whose program has ended.
void collect(ChildRecord& child)
{
    if (child.keeper != 0)  // the keeper exits next
        Posix::retry([&] { return ::waitpid(child.keeper, nullptr, 0); });
    collectIfEnded(child);
}

/// The list of our own children that have outlived their OsProcess and are still to be collected. It has no lock: a
/// forked child, which inherits the list but owns none of these, could find a lock held by a thread that it does not
/// have.
class ReleasedChildren
{
public:
    static void add(ChildRecord* child)
    {
        child->next = _first.load(std::memory_order_relaxed);
        // Release, with the acquire in takeAll(): without them the taking thread could read an older `next`.
        // model: tests/models/children.pml.
        while (
            !_first.compare_exchange_weak(child->next, child, std::memory_order_release, std::memory_order_relaxed))
            continue;
    }

    /// Empties the list and returns its first element; null if it was empty.
    static ChildRecord* takeAll() { return _first.exchange(nullptr, std::memory_order_acquire); }

private:
    static inline constinit std::atomic<ChildRecord*> _first = nullptr;
};

/// Deletes the record of a child, or puts it into the list if the child is still to be collected.
struct ReleaseChild
{
    void operator()(ChildRecord* child) const
    {
        if (collectIfEnded(*child))
            delete child;
        else
            ReleasedChildren::add(child);
    }
};
using ChildRecordPtr = std::unique_ptr<ChildRecord, ReleaseChild>;

/// Collects the released children that have ended by now; the others return to the list.
void collectReleased()
{
    for (ChildRecord* child = ReleasedChildren::takeAll(); child != nullptr;) {
        ChildRecord* const next = child->next;
        ReleaseChild()(child);
        child = next;
    }
}

/// Never frees a launch whose memory a process may still use. The list makes it reachable for leak checkers.
void abandon(std::unique_ptr<Launch> launch)
{
    static constinit std::atomic<Launch*> last = nullptr;
    launch->before = last.exchange(launch.get());
    launch.release();
}

/// Whether the system has all calls of a start in shared memory. waitid() with a pidfd is the newest of them, Linux
/// 5.4; it answers EBADF to a number that is no open descriptor, and EINVAL where it is unknown.
bool knowsProcessDescriptors()
{
    return Posix::retry([] { return ::waitid(P_PIDFD, INT_MAX, nullptr, WEXITED | WNOHANG); }) == -1 &&
           errno == EBADF;
}

/// The errors of systems, emulators and filters that lack a call or one of its flags.
bool meansUnknown(int error)
{
    return error == ENOSYS || error == EINVAL || error == EPERM;
}

enum class Outcome
{
    isRunning,
    failed,     ///< `errno` says why
    impossible  ///< on this system: the fallback can do it
};

Outcome failed(int error)
{
    errno = error;
    return Outcome::failed;
}

/// The descriptor of a process off the numbers 0 to 2, if the system has another one. If not it is kept: the program runs
/// already.
int keepAboveStandard(int process)
{
    if (process == -1 || process > STDERR_FILENO)
        return process;
    const int lifted = ::fcntl(process, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    if (lifted != -1)
        ::close(process);
    return lifted != -1 ? lifted : process;
}

/// The outcome of a start whose intermediate process was cloned.
Outcome follow(std::unique_ptr<Launch> launch, ChildRecord& child)
{
    Descriptor intermediate(launch->intermediate);
    if (launch->isDirect && launch->error == 0) {
        child.end.reset(keepAboveStandard(intermediate.release()));
        return Outcome::isRunning;
    }
    waitFor(intermediate, 0);
    if (!launch->isDirect && !launch->isFollowed) {
        abandon(std::move(launch));
        return failed(ECHILD);
    }
    Descriptor started(launch->started);
    if (launch->error == 0) {
        child.end.reset(keepAboveStandard(started.release()));
        return Outcome::isRunning;
    }
    return !launch->isCloned && meansUnknown(launch->error) ? Outcome::impossible : failed(launch->error);
}

Outcome startInSharedMemory(char const* const* argv, ChildRecord& child)
{
    if (!knowsProcessDescriptors())
        return Outcome::impossible;
    auto launch = std::make_unique<Launch>(argv);
    const ProcessStart::SignalsBlocked signals;
    launch->signals = signals.getBefore();
    const int intermediate =
        __clone(beIntermediate, launch->stacks[0].getTop(), CLONE_VM | CLONE_VFORK | CLONE_FILES | CLONE_PIDFD,
                launch.get(), &launch->intermediate);
    if (intermediate == -1)
        return meansUnknown(errno) ? Outcome::impossible : Outcome::failed;
    return follow(std::move(launch), child);
}

/// False, with `errno` set, if the program can't be run.
bool startProgram(char const* const* argv, ChildRecord& child)
{
    if (argv == nullptr || argv[0] == nullptr)
        return fail(EINVAL);
    const Outcome outcome = startInSharedMemory(argv, child);
    return outcome == Outcome::impossible ? ProcessStart::startWithKeeper(argv, child)
                                          : outcome == Outcome::isRunning;
}

class OsProcessPosix : public OsProcessImp
{
public:
    explicit OsProcessPosix(char const* const* argv) : _child(new ChildRecord)
    {
        collectReleased();
        if (!startProgram(argv, *_child))
            throw ExSysErrorWindows(sourceName, __LINE__);
    }

    void wait() override
    {
        ::pollfd ended{_child->end.get(), POLLIN, 0};
        if (Posix::retry([&] { return ::poll(&ended, 1, -1); }) == -1)
            throw ExSysErrorWindows(sourceName, __LINE__);
        if ((ended.revents & (POLLIN | POLLHUP)) == 0) {
            errno = EBADF;  // the program has closed a descriptor that is not its own: there is nothing to wait on
            throw ExSysErrorWindows(sourceName, __LINE__);
        }
        collect(*_child);
    }

private:
    ChildRecordPtr _child;
};
}  // namespace

ObjPtrRet<OsProcessImp> System::startProcess(char const* const* argv)
{
    return ObjPtrRet<OsProcessImp>(new OsProcessPosix(argv));
}

}  // namespace Vn
