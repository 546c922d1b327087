// Replaces the allocation functions of this program and of the libraries that it uses.
#include "memory.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace
{
thread_local int left = -1;
thread_local bool hasFailed = false;
std::atomic<long> blocks = 0;

void* allocate(std::size_t size)
{
    if (left >= 0 && left-- == 0) {
        hasFailed = true;
        throw std::bad_alloc();
    }
    void* const memory = std::malloc(size != 0 ? size : 1);
    if (memory == nullptr)
        throw std::bad_alloc();
    ++blocks;
    return memory;
}

void release(void* memory)
{
    if (memory == nullptr)
        return;
    --blocks;
    std::free(memory);
}
}  // namespace

void* operator new(std::size_t size)
{
    return allocate(size);
}

void* operator new[](std::size_t size)
{
    return allocate(size);
}

void* operator new(std::size_t size, std::nothrow_t const&) noexcept
{
    try {
        return allocate(size);
    } catch (std::bad_alloc const&) {
        return nullptr;
    }
}

void operator delete(void* memory, std::nothrow_t const&) noexcept
{
    release(memory);
}

void operator delete(void* memory) noexcept
{
    release(memory);
}

void operator delete[](void* memory) noexcept
{
    release(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    release(memory);
}

void operator delete[](void* memory, std::size_t) noexcept
{
    release(memory);
}

void VnTest::startFailing(int countdown)
{
    hasFailed = false;
    left = countdown;
}

long VnTest::countBlocks()
{
    return blocks;
}

bool VnTest::stopFailing()
{
    left = -1;
    return hasFailed;
}
