// osfilehandlewindows.cpp (Linux form: osfilehandlelinux.cpp)
//
// Each function is one call of the system, whose limits are the interface's: sizes have 32 bits, as `unsigned long`
// has here. Files are opened shared, so other readers and writers may have them at the same time.
#include <base/osfilehandle_p.h>

#include <base/osaccess_p.h>

#include <windows.h>

namespace Vn::System
{
namespace
{
constexpr DWORD sharedWithAll = FILE_SHARE_READ | FILE_SHARE_WRITE;

static_assert(originOf(OsFileTypes::FromCurrent) == FILE_CURRENT &&
              originOf(OsFileTypes::FromBegin) == FILE_BEGIN && originOf(OsFileTypes::FromEnd) == FILE_END);

/// Our number is the handle's value, signed, so that INVALID_HANDLE_VALUE is closedHandle.
HANDLE systemHandle(std::int64_t handle)
{
    return reinterpret_cast<HANDLE>(static_cast<INT_PTR>(handle));
}

std::int64_t open(char const* path, DWORD access, DWORD disposition)
{
    return reinterpret_cast<INT_PTR>(
        ::CreateFileA(path, access, sharedWithAll, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr));
}
}  // namespace

std::int64_t openFile(char const* path, int mode)
{
    const DWORD access =
        (hasBit(mode, readAccess) ? GENERIC_READ : 0U) | (hasBit(mode, writeAccess) ? GENERIC_WRITE : 0U);
    return open(path, access, OPEN_EXISTING);
}

// Permissions are ignored: a new file inherits those of its directory.
std::int64_t openNewFile(char const* path, OsFileTypes::Permissions const&, bool failIfExists)
{
    return open(path, GENERIC_WRITE, failIfExists ? CREATE_NEW : CREATE_ALWAYS);
}

// The end of a file is no failure, in whichever way the system reports it.
std::int64_t readFile(std::int64_t handle, void* buffer, unsigned long size)
{
    DWORD count = 0;
    if (!::ReadFile(systemHandle(handle), buffer, size, &count, nullptr) && ::GetLastError() != ERROR_HANDLE_EOF)
        return -1;
    return count;
}

// A full disk is no failure: the count is short.
std::int64_t writeFile(std::int64_t handle, void const* buffer, unsigned long size)
{
    DWORD count = 0;
    if (!::WriteFile(systemHandle(handle), buffer, size, &count, nullptr) &&
        ::GetLastError() != ERROR_HANDLE_DISK_FULL)
        return -1;
    return count;
}

std::optional<std::int32_t> seekFile(std::int64_t handle, long offset, OsFileTypes::SeekMode mode)
{
    // Only the last error tells a failure, since every result can be a position; and a success doesn't reset it.
    ::SetLastError(0);
    const DWORD low = ::SetFilePointer(systemHandle(handle), offset, nullptr, static_cast<DWORD>(originOf(mode)));
    if (::GetLastError() != 0)
        return std::nullopt;
    return static_cast<std::int32_t>(low);
}

bool setFileSize(std::int64_t handle, unsigned long size)
{
    return ::SetFilePointer(systemHandle(handle), static_cast<LONG>(size), nullptr, FILE_BEGIN) !=
               INVALID_SET_FILE_POINTER &&
           ::SetEndOfFile(systemHandle(handle));
}

// CopyFileA() would be faster, but takes paths and not handles, and carries attributes over, which a copy shall not.
bool shareBlocks(std::int64_t, std::int64_t)
{
    return false;
}

void copyRange(std::int64_t, std::int64_t) {}

CloseResult closeFile(std::int64_t handle)
{
    return ::CloseHandle(systemHandle(handle)) ? CloseResult::Closed : CloseResult::Kept;
}

void dropFile(std::int64_t handle) noexcept
{
    if (handle != closedHandle)
        ::CloseHandle(systemHandle(handle));
}

}  // namespace Vn::System
