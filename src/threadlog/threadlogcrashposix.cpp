// threadlogcrashposix.cpp (Windows form: threadlogcrashwindows.cpp)
//
// A handler that was there before, or the system's own way, follows ours. Where the program had a handler it is called from
// here, and may even save the program: ours then stays in place for the next time. Where it had none the system's way is put
// back. A fault then comes again when the handler returns, at the same instruction and with the same registers, as a core
// dump should show them; what another process or the program itself has sent is sent again.
//
//     came from             program's own handler          no handler
//     an instruction        called; it may save us         back to the system's way, and the instruction fails again
//     kill(), raise()       called; it may save us         back to the system's way, and the same signal is queued again
//     std::terminate()      called                         std::abort(), which comes here once more, for what was logged since
//
// Nothing here may allocate, lock or wait without end. What it calls is on the list of functions for signal handlers, or a
// thin wrapper of a system call. The thread-local variables lie in the block that a thread gets when it is made
// (`initial-exec`): the first access to another kind calls the allocator.
#include <threadlog/threadlogcrash_p.h>

#include <threadlog/threadlogsystem_p.h>

#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <iterator>
#include <utility>

namespace Vn
{
namespace
{
constexpr int crashSignals[] = {SIGSEGV, SIGABRT, SIGBUS, SIGFPE, SIGILL};

struct sigaction before[std::size(crashSignals)];
std::terminate_handler terminateBefore = nullptr;
std::atomic<bool> installed = false;

/// Written by the call that installs the handler. Only our five signals come here.
struct sigaction& beforeOf(int signal)
{
    std::size_t i = 0;
    while (crashSignals[i] != signal)
        ++i;
    return before[i];
}

/// The log may go to a pipe that nobody reads. The signal for that, which waits until the handler returns, would end the
/// process instead of the crash.
class NoPipeSignal
{
public:
    NoPipeSignal()
    {
        ::sigset_t pending;
        ::sigemptyset(&_pipe);
        ::sigaddset(&_pipe, SIGPIPE);
        ::pthread_sigmask(SIG_BLOCK, &_pipe, &_mask);
        ::sigpending(&pending);
        _wasPending = ::sigismember(&pending, SIGPIPE) == 1;
    }
    ~NoPipeSignal()
    {
        const ::timespec atOnce = {};
        if (!_wasPending)
            ::sigtimedwait(&_pipe, nullptr, &atOnce);
        ::pthread_sigmask(SIG_SETMASK, &_mask, nullptr);
    }
    NoPipeSignal(NoPipeSignal const&) = delete;
    NoPipeSignal& operator=(NoPipeSignal const&) = delete;

private:
    ::sigset_t _pipe;
    ::sigset_t _mask;
    bool _wasPending;
};

/// Either kind of handler: both are one place of the structure.
bool isProgramsHandler(struct sigaction const& action)
{
    return action.sa_handler != SIG_DFL && action.sa_handler != SIG_IGN;
}

/// The thread's last call of a program's handler from here: what it was called with, and where on the stack. Such a handler may call ours
/// in turn, if it was installed behind an earlier log's: with the same signal's data, further down the stack. One that has jumped
/// out of its call leaves this as it is; the next signal comes with data of its own, or at the same place.
struct Call
{
    ::siginfo_t const* info;
    std::uintptr_t frame;
};
[[gnu::tls_model("initial-exec")]] constinit thread_local Call lastCall = {nullptr, 0};

bool isWithin(Call const& inner, Call const& outer)
{
    return inner.info == outer.info && inner.frame < outer.frame;
}

/// As the system would call it: with the signals blocked, or not, and the system's way back in place, as it asked for.
void callHandler(struct sigaction const& action, int signal, ::siginfo_t* info, void* context)
{
    ::sigset_t mask, own;
    ::sigemptyset(&own);
    ::sigaddset(&own, signal);
    ::pthread_sigmask(SIG_BLOCK, &action.sa_mask, &mask);
    if ((action.sa_flags & SA_NODEFER) != 0)
        ::pthread_sigmask(SIG_UNBLOCK, &own, nullptr);
    if ((static_cast<unsigned>(action.sa_flags) & SA_RESETHAND) != 0)
        ::signal(signal, SIG_DFL);
    if ((action.sa_flags & SA_SIGINFO) != 0)
        action.sa_sigaction(signal, info, context);
    else
        action.sa_handler(signal);
    ::pthread_sigmask(SIG_SETMASK, &mask, nullptr);
}

/// errno is the interrupted code's, which may go on if the program's handler saves it.
void onCrash(int signal, ::siginfo_t* info, void* context)
{
    const int error = errno;
    {
        const NoPipeSignal guard;
        if (ThreadLogCrash::writeAll())
            ThreadLogCrash::resume();
    }
    struct sigaction const& action = beforeOf(signal);
    errno = error;
    const Call call = {info, reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0))};
    const bool isWithinItself = isWithin(call, lastCall);
    if (isProgramsHandler(action) && !isWithinItself) {
        lastCall = call;
        callHandler(action, signal, info, context);
        lastCall = {nullptr, 0};
        return;
    }
    if (isWithinItself)
        ::signal(signal, SIG_DFL);
    else
        ::sigaction(signal, &action, nullptr);
    const bool isSent = info->si_code <= 0;  // else the instruction that failed runs again
    if (isSent)
        ::syscall(SYS_rt_tgsigqueueinfo, ::getpid(), ::syscall(SYS_gettid), signal, info);
}

/// Before the exception's own handler, which often ends the process without a signal.
/// The handler before is taken out first: if it ends in std::terminate() again, the second round goes straight on to abort().
[[noreturn]] void onTerminate()
{
    {
        const NoPipeSignal guard;
        if (ThreadLogCrash::writeAll())
            ThreadLogCrash::resume();
    }
    if (std::terminate_handler const handler = std::exchange(terminateBefore, nullptr); handler != nullptr)
        handler();
    std::abort();
}

/// Takes a message off a queue once, so that the loader has bound by now what the handler calls within the other library.
void bindCalls()
{
    LgQueue queue;
    char text[8];
    if (queue.reserveEntry(LgTypes::Warning)) {
        queue.getStream() << "text" << ends;
        queue.addEntry();
        queue.getStream() >> text;
        queue.removeEntry();
    }
}
}  // namespace

/// Asked by each new thread, which then needs a stack for the handler.
bool ThreadLogCrash::isInstalled()
{
    return installed.load(std::memory_order_acquire);
}

/// On the thread's signal stack, if it has one: a stack overflow leaves no room on its own.
void ThreadLogCrash::install()
{
    if (installed.exchange(true))
        return;
    ThreadLogSystem::provideSignalStack();
    bindCalls();
    struct sigaction action = {};
    action.sa_sigaction = onCrash;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    ::sigemptyset(&action.sa_mask);
    for (const int signal : crashSignals)
        ::sigaction(signal, &action, &beforeOf(signal));
    terminateBefore = std::set_terminate(onTerminate);
}

/// A handler that the program has installed since stays; it may call ours, which then finds nothing to write.
void ThreadLogCrash::uninstall()
{
    if (!installed.exchange(false))
        return;
    for (const int signal : crashSignals) {
        struct sigaction present = {};
        ::sigaction(signal, nullptr, &present);
        if (present.sa_sigaction == onCrash)
            ::sigaction(signal, &beforeOf(signal), nullptr);
    }
    if (std::get_terminate() == onTerminate)
        std::set_terminate(terminateBefore);
}

}  // namespace Vn
