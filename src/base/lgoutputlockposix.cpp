// lgoutputlockposix.cpp (Windows form: lgoutputlockwindows.cpp)
#include <base/lgoutputlock_p.h>

#include <pthread.h>

#include <mutex>
#include <new>

namespace Vn
{
namespace
{
std::recursive_mutex& getMutex()
{
    // Never destroyed: a reader may be at work while static objects are.
    static std::recursive_mutex& mutex = *new std::recursive_mutex;
    return mutex;
}

/// The thread that held it in the parent isn't there to unlock it.
void startChild()
{
    ::new (static_cast<void*>(&getMutex())) std::recursive_mutex;
}
}  // namespace

LgOutputLock::LgOutputLock()
{
    static const int failure = ::pthread_atfork(nullptr, nullptr, startChild);
    (void)failure;  // for want of memory: then a child that forked during a line can't write
    getMutex().lock();
}

LgOutputLock::~LgOutputLock()
{
    getMutex().unlock();
}

}  // namespace Vn
