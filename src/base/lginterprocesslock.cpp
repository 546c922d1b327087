// What the lock has in common on both platforms: the guard, which does nothing without a lock.
//
// Both forms of the lock can fail to unlock, and the caller must hear of it; so the guard's destructor throws. A guard that is
// left by an exception keeps quiet instead: that exception is the more important one.
#include <base/lginterprocesslock.h>

#include <exception>

namespace Vn
{

/// The platform's form may throw when it closes its handle.
LgInterProcessLock::~LgInterProcessLock() noexcept(false) = default;

LgInterProcessLockGuard::LgInterProcessLockGuard(LgInterProcessLock* lock) : _lock(lock)
{
    if (_lock != nullptr)
        _lock->lock();
}

LgInterProcessLockGuard::~LgInterProcessLockGuard() noexcept(false)
{
    if (_lock == nullptr)
        return;
    try {
        _lock->unlock();
    } catch (...) {
        // A second exception while one unwinds the stack would end the program.
        if (std::uncaught_exceptions() == 0)
            throw;
    }
}

}  // namespace Vn
