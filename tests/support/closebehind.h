#pragma once

#include <base/osfilepath.h>

#include <cstdint>
#include <cstring>

#if defined(_WIN32)
#    include <windows.h>
#else
#    include <unistd.h>

#    include <cerrno>
#endif

namespace VnTest
{

/// The system's code for a handle that it doesn't know.
#if defined(_WIN32)
constexpr int unknownHandle = ERROR_INVALID_HANDLE;
#else
constexpr int unknownHandle = EBADF;
#endif

/// Takes the handle of a reader or writer away from it, as somebody who closes numbers that aren't his does. It stands
/// behind the path.
template <class Opened>
void closeBehind(Opened const& opened)
{
    static_assert(sizeof(Opened) == sizeof(Vn::OsFilePath) + sizeof(std::int64_t));
    std::int64_t handle;
    std::memcpy(&handle, reinterpret_cast<char const*>(&opened) + sizeof(Vn::OsFilePath), sizeof handle);
#if defined(_WIN32)
    ::CloseHandle(reinterpret_cast<HANDLE>(static_cast<INT_PTR>(handle)));
#else
    ::close(static_cast<int>(handle));
#endif
}

}  // namespace VnTest
