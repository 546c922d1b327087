// threadlogcrashposix.cpp (Windows form: threadlogcrashwindows.cpp)
//
// A handler that was there before, or the system's own way, follows ours. Where the program had a handler it is called from
// here, and may even save the program: ours then stays in place for the next time. Where it had none the system's way is put
// back. A fault then comes again when the handler returns, at the same instruction and with the same registers, as a core
// dump should show them; what another process or the program itself has sent is sent again.
#include <threadlog/threadlogcrash_p.h>

#include <threadlog/threadlogsystem_p.h>

#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <iterator>

namespace Vn
{
namespace
{
constexpr int crashSignals[] = {SIGSEGV, SIGABRT, SIGBUS, SIGFPE, SIGILL};

struct sigaction before[std::size(crashSignals)];
std::terminate_handler terminateBefore = nullptr;
std::atomic<bool> installed = false;

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

bool isOwnHandler(struct sigaction const& action)
{
    return (action.sa_flags & SA_SIGINFO) != 0 || (action.sa_handler != SIG_DFL && action.sa_handler != SIG_IGN);
}

/// As the system would call it: with the signals blocked that it asked for.
void callHandler(struct sigaction const& action, int signal, ::siginfo_t* info, void* context)
{
    ::sigset_t mask;
    ::pthread_sigmask(SIG_BLOCK, &action.sa_mask, &mask);
    if ((action.sa_flags & SA_SIGINFO) != 0)
        action.sa_sigaction(signal, info, context);
    else
        action.sa_handler(signal);
    ::pthread_sigmask(SIG_SETMASK, &mask, nullptr);
}

void onCrash(int signal, ::siginfo_t* info, void* context)
{
    const int error = errno;
    {
        const NoPipeSignal guard;
        ThreadLogCrash::writeAll();
    }
    struct sigaction const& action = beforeOf(signal);
    errno = error;
    if (isOwnHandler(action)) {
        callHandler(action, signal, info, context);
        return;
    }
    ::sigaction(signal, &action, nullptr);
    const bool isSent = info->si_code <= 0;  // else the instruction that failed runs again
    if (isSent)
        ::syscall(SYS_rt_tgsigqueueinfo, ::getpid(), ::syscall(SYS_gettid), signal, info);
}

[[noreturn]] void onTerminate()
{
    {
        const NoPipeSignal guard;
        ThreadLogCrash::writeAll();
    }
    if (terminateBefore != nullptr)
        terminateBefore();
    std::abort();
}
}  // namespace

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
        if (::sigaction(signal, nullptr, &present) == 0 && (present.sa_flags & SA_SIGINFO) != 0 &&
            present.sa_sigaction == onCrash)
            ::sigaction(signal, &beforeOf(signal), nullptr);
    }
    if (std::get_terminate() == onTerminate)
        std::set_terminate(terminateBefore);
}

}  // namespace Vn
