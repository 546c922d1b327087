// threadlogsystemposix.cpp (Windows form: threadlogsystemwindows.cpp)
//
// A thread's writer is found through a thread-local pointer, and its end is noticed by a key of pthreads: the pointer costs one
// load where the key would cost a call, and the key's function runs behind the destructors of thread-local objects, whose order
// among themselves nobody knows. Both hold the same address.
//
// membarrier() has been in the kernel since 4.14. An older one, or an emulator, makes the reader look again ten times a second.
#include <threadlog/threadlogsystem_p.h>

#include <threadlog/threadlogengine_p.h>

#include <dlfcn.h>
#include <link.h>
#include <linux/membarrier.h>
#include <pthread.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <condition_variable>
#include <cstddef>
#include <cstdlib>
#include <ctime>
#include <mutex>
#include <new>

namespace Vn::ThreadLogSystem
{
namespace
{
/// In the block that the loader gives to each thread at once: an access is one load, and allocates nothing.
[[gnu::tls_model("initial-exec")]] constinit thread_local ThreadLogWriter* writerOfThread = nullptr;

/// A signal stack that this library has made for the thread; null without one.
constinit thread_local void* signalStack = nullptr;
constexpr std::size_t signalStackSize = 65536;

/// Switched off before it is freed: a signal on its way must not find it.
void freeSignalStack()
{
    if (signalStack == nullptr)
        return;
    ::stack_t none = {};
    none.ss_flags = SS_DISABLE;
    ::sigaltstack(&none, nullptr);
    ::munmap(signalStack, signalStackSize);
    signalStack = nullptr;
}

void onThreadEnd(void* writer)
{
    writerOfThread = nullptr;
    freeSignalStack();
    ThreadLogEngine::get().endWriter(*static_cast<ThreadLogWriter*>(writer));
}

/// What the reader sleeps at.
struct Bed
{
    std::mutex mutex;
    std::condition_variable woken;
};

/// Never destroyed, as threads may log while static objects go; and not on the heap, as the reader can't do without it.
Bed& getBed()
{
    alignas(Bed) static std::byte memory[sizeof(Bed)];
    static Bed& bed = *new (memory) Bed;
    return bed;
}

/// Keys are destroyed behind thread-local objects, whose destructors may log. A message behind that makes a new writer, and the
/// system calls onThreadEnd() again.
class ThreadEndKey
{
public:
    ThreadEndKey() { _isMade = ::pthread_key_create(&_key, onThreadEnd) == 0; }
    ~ThreadEndKey()
    {
        if (_isMade)
            ::pthread_key_delete(_key);  // a library that has made no log may go away, with its function
        _isMade = false;
    }

    bool set(void const* value) const { return _isMade && ::pthread_setspecific(_key, value) == 0; }

private:
    ::pthread_key_t _key;
    bool _isMade;
};

ThreadEndKey threadEnd;
}  // namespace

ThreadLogWriter* getWriterOfThread()
{
    return writerOfThread;
}

/// The key first: with a pointer alone nobody would notice the end of the thread, and its queue would stay for ever.
bool setWriterOfThread(ThreadLogWriter* writer)
{
    if (!threadEnd.set(writer))
        return false;
    writerOfThread = writer;
    return true;
}

/// Not pthread_self(): a child of `fork` would have its parent's number, and the number in a debugger is this one.
std::uint64_t getThread()
{
    return static_cast<std::uint64_t>(::syscall(SYS_gettid));
}

/// Asked anew each time, as a child of `fork` has another number.
std::uint64_t getProcess()
{
    return static_cast<std::uint64_t>(::getpid());
}

/// As debuggers, `top -H` and crash reports show it; the system cuts a name behind 15 characters.
void nameThread()
{
    ::pthread_setname_np(::pthread_self(), "vn-threadlog");
}

bool fenceAllThreads()
{
    // Registered by each process for itself; a second time costs nothing.
    static std::uint64_t registered = 0;
    if (registered != getProcess() &&
        ::syscall(SYS_membarrier, MEMBARRIER_CMD_REGISTER_PRIVATE_EXPEDITED, 0, 0) == 0)
        registered = getProcess();
    return ::syscall(SYS_membarrier, MEMBARRIER_CMD_PRIVATE_EXPEDITED, 0, 0) == 0;
}

/// The condition is looked at under the lock that wakeSleeper() passes through, so no wake-up is missed.
void sleepUntil(bool (*isAwake)(), std::chrono::milliseconds atMost)
{
    std::unique_lock guard(getBed().mutex);
    if (atMost.count() != 0)
        getBed().woken.wait_for(guard, atMost, isAwake);
    else
        getBed().woken.wait(guard, isAwake);
}

/// Through the lock: the sleeper is then before its look at the condition, or asleep.
void wakeSleeper()
{
    getBed().mutex.lock();
    getBed().mutex.unlock();
    getBed().woken.notify_one();
}

void forgetSleeper()
{
    new (&getBed()) Bed;
}

/// nanosleep() is on the list of what a signal handler may call.
void pause()
{
    const ::timespec time = {0, 100000};
    ::nanosleep(&time, nullptr);
}

namespace
{
/// The loader must not take this library away any more: threads that have logged still have to give back their queues. A library
/// that is part of the program has no name of its own, and stays anyway.
bool stayLoaded()
{
    ::Dl_info self = {};
    ::link_map* object = nullptr;
    if (::dladdr1(reinterpret_cast<void*>(onThreadEnd), &self, reinterpret_cast<void**>(&object),
                  RTLD_DL_LINKMAP) == 0 ||
        object == nullptr || *object->l_name == '\0')
        return true;
    void* const library = ::dlopen(object->l_name, RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE);
    return library != nullptr && ::dlclose(library) == 0;  // the mark stays
}
}  // namespace

/// For the life of the process, whether a log exists or not: a log may be made in a child, or behind another one. The last step is
/// the only one that must not be taken twice.
void installHooks()
{
    if (!stayLoaded() || std::atexit([] { ThreadLogEngine::get().stopAtExit(); }) != 0 ||
        ::pthread_atfork([] { ThreadLogEngine::get().beforeFork(); },
                         [] { ThreadLogEngine::get().afterForkInParent(); },
                         [] { ThreadLogEngine::get().afterForkInChild(); }) != 0)
        throw std::bad_alloc();
}

namespace
{
/// What the thread's mask was: one thread makes another at a time, and a mask is the thread's own.
thread_local ::sigset_t maskBefore;
}  // namespace

/// All but the five that a fault sends to the thread that made it: blocked, these would end the process without a word.
SignalsBlocked::SignalsBlocked()
{
    ::sigset_t all;
    ::sigfillset(&all);
    for (const int signal : {SIGSEGV, SIGABRT, SIGBUS, SIGFPE, SIGILL})
        ::sigdelset(&all, signal);
    ::pthread_sigmask(SIG_BLOCK, &all, &maskBefore);
}

SignalsBlocked::~SignalsBlocked()
{
    ::pthread_sigmask(SIG_SETMASK, &maskBefore, nullptr);
}

/// A sanitizer, or the program, may have given the thread one: theirs stays.
void provideSignalStack()
{
    ::stack_t present = {};
    if (::sigaltstack(nullptr, &present) != 0 || (present.ss_flags & SS_DISABLE) == 0)
        return;
    void* const memory =
        ::mmap(nullptr, signalStackSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0);
    if (memory == MAP_FAILED)
        return;
    ::stack_t made = {};
    made.ss_sp = memory;
    made.ss_size = signalStackSize;
    if (::sigaltstack(&made, nullptr) == 0)
        signalStack = memory;
    else
        ::munmap(memory, signalStackSize);
}

}  // namespace Vn::ThreadLogSystem
