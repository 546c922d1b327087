// lginterprocesslockwindows.cpp (POSIX form: lginterprocesslockposix.cpp)
#include <base/lginterprocesslock.h>

#include <base/exsyserror.h>

#include <windows.h>

namespace Vn
{
namespace
{
constexpr char sourceName[] = "src/base/lginterprocesslock";

/// A named mutex. The system counts how often its thread has locked it and releases it with the last process.
class LockWindows : public LgInterProcessLock
{
public:
    explicit LockWindows(char const* name);
    ~LockWindows() noexcept(false) override;

    void lock() override;
    void unlock() override;

private:
    ::HANDLE _handle;
};

/// Not owned initially: the first lock() takes it, in whichever process comes first.
LockWindows::LockWindows(char const* name) : _handle(::CreateMutexA(nullptr, FALSE, name))
{
    if (_handle == nullptr)
        throw ExSysErrorWindows(sourceName, __LINE__);
}

/// Intended: throws from a destructor; do not mend. A handle that can't be closed is a mistake of the program, which
/// nothing else would show.
LockWindows::~LockWindows() noexcept(false)
{
    if (!::CloseHandle(_handle))
        throw ExSysErrorWindows(sourceName, __LINE__);
}

/// An abandoned mutex counts as a failure too: what its holder was writing may be half done.
void LockWindows::lock()
{
    const ::DWORD result = ::WaitForSingleObject(_handle, INFINITE);
    if (result == WAIT_OBJECT_0)
        return;
    if (result == WAIT_ABANDONED) {
        // The system has given the mutex to this thread, which is told of a failure and so must not keep it. The code
        // is set again because ReleaseMutex() may change it.
        ::ReleaseMutex(_handle);
        ::SetLastError(ERROR_ABANDONED_WAIT_0);
    }
    throw ExSysErrorWindows(sourceName, __LINE__);
}

void LockWindows::unlock()
{
    if (!::ReleaseMutex(_handle))
        throw ExSysErrorWindows(sourceName, __LINE__);
}
}  // namespace

/// The system gives all processes that use one name the same mutex.
LgInterProcessLock* LgInterProcessLock::create(char const* name)
{
    return new LockWindows(name);
}

}  // namespace Vn
