// lginterprocesslockwindows.cpp (POSIX form: lginterprocesslockposix.cpp)
#include <base/lginterprocesslock.h>

#include <base/exsyserror.h>

#include <windows.h>

namespace Vn
{
namespace
{
constexpr char sourceName[] = "src/base/lginterprocesslock";

/// A named mutex.
class LockWindows : public LgInterProcessLock
{
public:
    explicit LockWindows(::HANDLE handle) : _handle(handle) {}
    ~LockWindows() noexcept(false) override;

    void lock() override;
    void unlock() override;

private:
    ::HANDLE _handle;
};

LockWindows::~LockWindows() noexcept(false)
{
    if (!::CloseHandle(_handle))
        throw ExSysErrorWindows(sourceName, __LINE__);
}

void LockWindows::lock()
{
    const ::DWORD result = ::WaitForSingleObject(_handle, INFINITE);
    if (result == WAIT_OBJECT_0)
        return;
    if (result == WAIT_ABANDONED) {
        // It is this thread's now, which must not keep it when it is told that it has failed.
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

LgInterProcessLock* LgInterProcessLock::create(char const* name)
{
    ::HANDLE const handle = ::CreateMutexA(nullptr, FALSE, name);
    if (handle == nullptr)
        throw ExSysErrorWindows(sourceName, __LINE__);
    try {
        return new LockWindows(handle);
    } catch (...) {
        ::CloseHandle(handle);
        throw;
    }
}

}  // namespace Vn
