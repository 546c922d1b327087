// What the lock has in common on both platforms: the guard, which does nothing without a lock.
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
        // A second exception during unwinding would end the program.
        if (std::uncaught_exceptions() == 0)
            throw;
    }
}

}  // namespace Vn
