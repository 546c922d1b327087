#pragma once

#include <base/baseexport.h>

namespace Vn
{

/// A lock of the system, known by its name to all processes of a user.
///
///     Vn::ObjPtr<Vn::LgInterProcessLock> lock(Vn::LgInterProcessLock::create("renderer log"));
///     {
///         Vn::LgInterProcessLockGuard guard(lock.get());
///         writeWholeLine();
///     }
///
/// Excludes other processes and other threads. Its holder is a thread, whichever object of the name it has taken it
/// through; it may take it again, and gives it up when it has unlocked as often. If the holder dies, the system
/// releases the lock: on Linux the next one takes it as if nothing had happened; on Windows the next lock() throws,
/// and later ones succeed. A child of `fork` holds nothing. Not in a signal handler, which may
/// have interrupted the holder. Every call may throw ExSysErrorWindows. Tests:
/// tests/base/lginterprocesslocktest.cpp.
class VN_BASE_EXPORT LgInterProcessLock
{
public:
    /// Closes the lock; other objects and processes of that name keep theirs. Not while this thread holds it.
    virtual ~LgInterProcessLock() noexcept(false);

    /// Blocks until the lock is free, without a time limit.
    virtual void lock() = 0;

    /// Releases one lock() of this thread. Throws ExSysErrorWindows if this thread isn't the holder.
    virtual void unlock() = 0;

    /// The lock of that name, which the caller owns; null gives a lock that nobody else can name. On Linux any text
    /// is a name; on Windows one can hold neither a backslash nor more than 260 characters.
    static LgInterProcessLock* create(char const* name);
};

/// Holds a lock for a scope, or nothing if there is none. Doesn't own the lock, which must outlive it.
/// Tests: tests/base/lginterprocesslocktest.cpp.
class VN_BASE_EXPORT LgInterProcessLockGuard
{
public:
    /// Blocks until `lock` is free; null does nothing. Throws what lock() throws.
    explicit LgInterProcessLockGuard(LgInterProcessLock* lock);

    /// Unlocks. Throws what unlock() throws, unless another exception is unwinding already: then that is dropped.
    ~LgInterProcessLockGuard() noexcept(false);

    LgInterProcessLockGuard(LgInterProcessLockGuard const&) = delete;
    LgInterProcessLockGuard& operator=(LgInterProcessLockGuard const&) = delete;

private:
    LgInterProcessLock* _lock;
};

}  // namespace Vn
