// threadlogsystemwindows.cpp (POSIX form: threadlogsystemposix.cpp)
//
// Fiber-local storage instead of thread-local objects: its callback is the system's own, and runs in each thread that ends,
// whoever made it; MinGW destroys thread-local objects when their memory is gone.
#include <threadlog/threadlogsystem_p.h>

#include <threadlog/threadlogengine_p.h>

#include <windows.h>

namespace Vn::ThreadLogSystem
{
namespace
{
/// Whether the system is ending the process. It then calls onThreadEnd() as well, for the thread that is left, when all others
/// are killed, with the locks that they held.
///
/// Looked up while the library is loaded, and never in onThreadEnd(): that runs under a lock of the system which a thread that
/// starts wants, too, while it holds the lock that each look into a library needs. The two would wait for each other.
using ProcessEnd = ::BOOLEAN(WINAPI*)();
const auto isProcessEnding = reinterpret_cast<ProcessEnd>(
    reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleA("ntdll.dll"), "RtlDllShutdownInProgress")));

void WINAPI onThreadEnd(void* writer)
{
    if (writer != nullptr && (isProcessEnding == nullptr || !isProcessEnding()))
        ThreadLogEngine::get().endWriter(*static_cast<ThreadLogWriter*>(writer));
}

/// Never freed: this object has no destructor. Behind what its callback needs.
const ::DWORD slot = ::FlsAlloc(onThreadEnd);

/// What the reader sleeps at. An event of the system remembers a wake-up that comes before the sleep, and setting it takes no lock;
/// a condition variable's mutex might be held by a reader that looks for the clock's function in a library.
const ::HANDLE woken = ::CreateEventA(nullptr, FALSE, FALSE, nullptr);
}  // namespace

ThreadLogWriter* getWriterOfThread()
{
    return static_cast<ThreadLogWriter*>(::FlsGetValue(slot));
}

bool setWriterOfThread(ThreadLogWriter* writer)
{
    return ::FlsSetValue(slot, writer) != 0;
}

std::uint64_t getThread()
{
    return ::GetCurrentThreadId();
}

std::uint64_t getProcess()
{
    return ::GetCurrentProcessId();
}

/// From Windows 10 on; older ones don't have the call.
void nameThread()
{
    using Call = ::HRESULT(WINAPI*)(::HANDLE, ::PCWSTR);
    const ::FARPROC function = ::GetProcAddress(::GetModuleHandleA("kernel32.dll"), "SetThreadDescription");
    if (function != nullptr)
        reinterpret_cast<Call>(reinterpret_cast<void*>(function))(::GetCurrentThread(), L"vn-threadlog");
}

bool fenceAllThreads()
{
    ::FlushProcessWriteBuffers();
    return true;
}

/// A wake-up from before only makes it look once more. Without the event, by looking.
void sleepUntil(bool (*isAwake)(), std::chrono::milliseconds atMost)
{
    const ::DWORD patience = atMost.count() != 0 ? static_cast<::DWORD>(atMost.count()) : INFINITE;
    while (!isAwake()) {
        const ::DWORD end = ::WaitForSingleObject(woken, patience);
        if (end == WAIT_TIMEOUT)
            return;
        if (end == WAIT_FAILED)
            ::Sleep(1);
    }
}

void wakeSleeper()
{
    ::SetEvent(woken);
}

void forgetSleeper() {}

void pause()
{
    ::Sleep(1);
}

/// Threads that have logged still call onThreadEnd() when they end, so the library must not go away any more.
///
/// Nothing at the end of the process: a library is called when the system has killed all other threads, with the locks that they
/// held, and whoever waits for one of these keeps the process from ending.
void installHooks()
{
    ::HMODULE self = nullptr;
    ::GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                         reinterpret_cast<char const*>(onThreadEnd), &self);
}

/// A signal of the runtime goes to a thread of its own.
SignalsBlocked::SignalsBlocked() = default;
SignalsBlocked::~SignalsBlocked() = default;

/// The system calls the handler of a stack overflow on what it has kept of the stack.
void provideSignalStack() {}

}  // namespace Vn::ThreadLogSystem
