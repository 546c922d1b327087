// osfilehandlewindows.cpp (Linux form: osfilehandlelinux.cpp)
#include <base/osfilehandle_p.h>

#include <windows.h>

namespace Vn::System
{
namespace
{
constexpr DWORD sharedWithAll = FILE_SHARE_READ | FILE_SHARE_WRITE;

static_assert(originOf(OsFileTypes::FromCurrent) == FILE_CURRENT &&
              originOf(OsFileTypes::FromBegin) == FILE_BEGIN && originOf(OsFileTypes::FromEnd) == FILE_END);

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
    const DWORD access = ((mode & 1) != 0 ? GENERIC_READ : 0U) | ((mode & 2) != 0 ? GENERIC_WRITE : 0U);
    return open(path, access, OPEN_EXISTING);
}

std::int64_t openNewFile(char const* path, OsFileTypes::Permissions const&, bool failIfExists)
{
    return open(path, GENERIC_WRITE, failIfExists ? CREATE_NEW : CREATE_ALWAYS);
}

std::int64_t readFile(std::int64_t handle, void* buffer, unsigned long size)
{
    DWORD count = 0;
    if (!::ReadFile(systemHandle(handle), buffer, size, &count, nullptr) && ::GetLastError() != ERROR_HANDLE_EOF)
        return -1;
    return count;
}

std::int64_t writeFile(std::int64_t handle, void const* buffer, unsigned long size)
{
    DWORD count = 0;
    if (!::WriteFile(systemHandle(handle), buffer, size, &count, nullptr) &&
        ::GetLastError() != ERROR_HANDLE_DISK_FULL)
        return -1;
    return count;
}

bool seekFile(std::int64_t handle, long offset, OsFileTypes::SeekMode mode, std::int32_t& position)
{
    // Success leaves an earlier error standing, and every result is a position.
    ::SetLastError(0);
    const DWORD low = ::SetFilePointer(systemHandle(handle), offset, nullptr, static_cast<DWORD>(originOf(mode)));
    position = static_cast<std::int32_t>(low);
    return ::GetLastError() == 0;
}

bool setFileSize(std::int64_t handle, unsigned long size)
{
    return ::SetFilePointer(systemHandle(handle), static_cast<LONG>(size), nullptr, FILE_BEGIN) !=
               INVALID_SET_FILE_POINTER &&
           ::SetEndOfFile(systemHandle(handle));
}

bool closeFile(std::int64_t& handle)
{
    if (!::CloseHandle(systemHandle(handle)))
        return false;
    handle = closedHandle;
    return true;
}

void dropFile(std::int64_t handle) noexcept
{
    if (handle != closedHandle)
        ::CloseHandle(systemHandle(handle));
}

}  // namespace Vn::System
