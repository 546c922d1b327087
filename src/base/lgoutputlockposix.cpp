// lgoutputlockposix.cpp (Windows form: lgoutputlockwindows.cpp)
//
// A mutex that survives both ends of a process: static destruction leaves it alone, and a child of `fork` gets a new one.
#include <base/lgoutputlock_p.h>

#include <pthread.h>

#include <mutex>
#include <new>

namespace Vn
{
namespace
{
/// One for the process, made by whichever thread comes first.
std::recursive_mutex& getMutex()
{
    // Never destroyed: a reader may be at work while static objects are.
    static std::recursive_mutex& mutex = *new std::recursive_mutex;
    return mutex;
}

/// The thread that held the mutex in the parent doesn't exist in the child, so nobody would ever unlock it: the child
/// gets a fresh mutex in the same place.
void startChild()
{
    ::new (static_cast<void*>(&getMutex())) std::recursive_mutex;
}
}  // namespace

/// Blocks while another thread writes a line or changes outputs.
LgOutputLock::LgOutputLock()
{
    // Registered once. It fails only if there is no memory; a child that was forked while a line was written then waits for
    // ever when it writes one itself.
    static const int failure = ::pthread_atfork(nullptr, nullptr, startChild);
    (void)failure;
    getMutex().lock();
}

LgOutputLock::~LgOutputLock()
{
    getMutex().unlock();
}

}  // namespace Vn
