// threadlogcrashwindows.cpp (POSIX form: threadlogcrashposix.cpp)
//
// Exceptions that nobody handles come to the filter; abort() and std::terminate() don't, and are caught where the runtime
// lets them be. What was there before follows each time.
//
// The end of a process kills its other threads wherever they are, with the locks that they hold, and then calls the libraries. So
// the reader stays at rest once the lines are written, unless the process goes on: killed in the middle of an allocation, it would
// keep the process from ending.
#include <threadlog/threadlogcrash_p.h>

#include <threadlog/threadlogengine_p.h>

#include <windows.h>

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <utility>

namespace Vn
{
namespace
{
using SignalHandler = void (*)(int);

std::atomic<bool> installed = false;
::LPTOP_LEVEL_EXCEPTION_FILTER filterBefore = nullptr;
std::terminate_handler terminateBefore = nullptr;
SignalHandler abortBefore = SIG_DFL;

::LONG WINAPI onException(::EXCEPTION_POINTERS* exception)
{
    const bool isHeld = ThreadLogCrash::writeAll();
    const ::LONG result = filterBefore != nullptr ? filterBefore(exception) : EXCEPTION_CONTINUE_SEARCH;
    if (isHeld && result == EXCEPTION_CONTINUE_EXECUTION)
        ThreadLogCrash::resume();
    return result;
}

/// The runtime has put back its own way by now, and goes on with it when this returns.
void onAbort(int signal)
{
    ThreadLogCrash::writeAll();
    if (abortBefore != SIG_DFL && abortBefore != SIG_IGN && abortBefore != SIG_ERR)
        abortBefore(signal);
}

[[noreturn]] void onTerminate()
{
    ThreadLogCrash::writeAll();
    if (std::terminate_handler const handler = std::exchange(terminateBefore, nullptr); handler != nullptr)
        handler();
    std::abort();
}
}  // namespace

bool ThreadLogCrash::isInstalled()
{
    return installed.load(std::memory_order_acquire);
}

void ThreadLogCrash::install()
{
    if (installed.exchange(true))
        return;
    filterBefore = ::SetUnhandledExceptionFilter(onException);
    abortBefore = std::signal(SIGABRT, onAbort);
    terminateBefore = std::set_terminate(onTerminate);
}

/// What the program has installed since stays. If it has survived a crash, by a handler that jumped out or called exit(), the
/// reader still rests, and the stop would wait for it for ever.
void ThreadLogCrash::uninstall()
{
    if (!installed.exchange(false))
        return;
    ThreadLogEngine::get().releaseReaderFromAll();
    const ::LPTOP_LEVEL_EXCEPTION_FILTER present = ::SetUnhandledExceptionFilter(filterBefore);
    if (present != onException)
        ::SetUnhandledExceptionFilter(present);
    const SignalHandler handler = std::signal(SIGABRT, abortBefore);
    if (handler != onAbort)
        std::signal(SIGABRT, handler);
    if (std::get_terminate() == onTerminate)
        std::set_terminate(terminateBefore);
}

}  // namespace Vn
