// livememorylinux.cpp (Windows form: livememorywindows.cpp)
#include "livememory.h"

#include <malloc.h>

/// Of the sanitizers, which have an allocator of their own, and of the address sanitizer.
extern "C" __attribute__((weak)) std::size_t __sanitizer_get_current_allocated_bytes();
extern "C" __attribute__((weak)) int __asan_address_is_poisoned(void const volatile* address);

/// Of Clang's coverage, whose runtime is in each library that comes.
extern "C" __attribute__((weak)) int __llvm_profile_write_file();

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
    return __asan_address_is_poisoned == nullptr && __llvm_profile_write_file == nullptr;
}

}  // namespace VnSoak
