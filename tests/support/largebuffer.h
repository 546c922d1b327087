#pragma once

#include <cstddef>

#if defined(_WIN32)
#    include <windows.h>
#else
#    include <sys/mman.h>
#endif

namespace VnTest
{

/// Addresses of gigabytes that take no memory for as long as nobody touches them, for calls that don't.
class LargeBuffer
{
public:
    explicit LargeBuffer(std::size_t size) : _size(size)
    {
#if defined(_WIN32)
        _start = ::VirtualAlloc(nullptr, size, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
#else
        void* const start =
            ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        _start = start != MAP_FAILED ? start : nullptr;
#endif
    }
    ~LargeBuffer()
    {
        if (_start == nullptr)
            return;
#if defined(_WIN32)
        ::VirtualFree(_start, 0, MEM_RELEASE);
#else
        ::munmap(_start, _size);
#endif
    }
    LargeBuffer(LargeBuffer const&) = delete;
    LargeBuffer& operator=(LargeBuffer const&) = delete;

    /// Null where the system has no room.
    void* get() const
    {
        return _start;
    }

private:
    std::size_t _size;
    void* _start;
};

/// Why a test with such a buffer is left out, or null. The thread sanitizer keeps notes on each byte that a call of the
/// system gets to see, which takes many times the memory.
inline char const* whyNoLargeBuffer(LargeBuffer const& buffer)
{
#if defined(__SANITIZE_THREAD__)
    return buffer.get() != nullptr ? "the thread sanitizer would note each byte" : "no room";
#else
    return buffer.get() != nullptr ? nullptr : "no room for gigabytes of addresses";
#endif
}

}  // namespace VnTest
