// livememorylinux.cpp (Windows form: livememorywindows.cpp)
#include "livememory.h"

#include <malloc.h>

/// Of the sanitizers, which have an allocator of their own, and of the address sanitizer.
extern "C" __attribute__((weak)) std::size_t __sanitizer_get_current_allocated_bytes();
extern "C" __attribute__((weak)) int __asan_address_is_poisoned(void const volatile* address);

namespace VnSoak
{

std::size_t getLiveMemory()
{
    if (__sanitizer_get_current_allocated_bytes != nullptr)
        return __sanitizer_get_current_allocated_bytes();
    const struct ::mallinfo2 counted = ::mallinfo2();
    return counted.uordblks + counted.hblkhd;
}

bool isFlatWithoutLeaks()
{
    return __asan_address_is_poisoned == nullptr;
}

}  // namespace VnSoak
