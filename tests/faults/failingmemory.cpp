// Replaces the C library's allocation functions, for this program and for all libraries that it uses.
//
// The C library and the C++ library call these by their names as everybody does, so strdup(), opendir(), dlopen() and the
// memory of an exception are among what fails. The work is done by the C library's own functions under their other names.
#include "failingmemory.h"

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <limits>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* memory);
}

namespace
{
constexpr long never = std::numeric_limits<long>::max();

constinit std::atomic<long> firstFailing = never;
constinit std::atomic<long> lastFailing = never;
constinit std::atomic<long> allocations = 0;
constinit std::atomic<long> failures = 0;
constinit std::atomic<long> heldBlocks = 0;
void (*atFirstFailure)() = nullptr;

bool fails()
{
    const long number = allocations.fetch_add(1, std::memory_order_relaxed);
    if (number < firstFailing.load(std::memory_order_relaxed) ||
        number > lastFailing.load(std::memory_order_relaxed))
        return false;
    if (failures.fetch_add(1, std::memory_order_relaxed) == 0)
        atFirstFailure();
    errno = ENOMEM;
    return true;
}

void* count(void* memory)
{
    if (memory != nullptr)
        heldBlocks.fetch_add(1, std::memory_order_relaxed);
    return memory;
}
}  // namespace

#define VN_STAND_IN extern "C" __attribute__((visibility("default")))

VN_STAND_IN void* malloc(std::size_t size) noexcept
{
    return fails() ? nullptr : count(__libc_malloc(size));
}

VN_STAND_IN void* calloc(std::size_t number, std::size_t size) noexcept
{
    return fails() ? nullptr : count(__libc_calloc(number, size));
}

VN_STAND_IN void* realloc(void* memory, std::size_t size) noexcept
{
    if (fails())
        return nullptr;
    void* const moved = __libc_realloc(memory, size);
    if (memory == nullptr)
        return count(moved);
    if (moved == nullptr && size == 0)
        heldBlocks.fetch_sub(1, std::memory_order_relaxed);
    return moved;
}

VN_STAND_IN void* reallocarray(void* memory, std::size_t number, std::size_t size) noexcept
{
    std::size_t whole = 0;
    if (__builtin_mul_overflow(number, size, &whole)) {
        errno = ENOMEM;
        return nullptr;
    }
    return realloc(memory, whole);
}

VN_STAND_IN void* memalign(std::size_t alignment, std::size_t size) noexcept
{
    return fails() ? nullptr : count(__libc_memalign(alignment, size));
}

VN_STAND_IN void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept
{
    return memalign(alignment, size);
}

VN_STAND_IN int posix_memalign(void** memory, std::size_t alignment, std::size_t size) noexcept
{
    const int before = errno;
    void* const made = memalign(alignment, size);
    errno = before;
    if (made == nullptr)
        return ENOMEM;
    *memory = made;
    return 0;
}

VN_STAND_IN void free(void* memory) noexcept
{
    if (memory == nullptr)
        return;
    heldBlocks.fetch_sub(1, std::memory_order_relaxed);
    __libc_free(memory);
}

void VnTest::failAllocation(long first, Failing failing, void (*onFailure)())
{
    atFirstFailure = onFailure;
    failures = 0;
    allocations = 0;
    lastFailing = failing == Failing::once ? first : never;
    firstFailing = first;
}

long VnTest::stopFailingAllocations()
{
    firstFailing = never;
    lastFailing = never;
    return allocations;
}

long VnTest::countFailedAllocations()
{
    return failures;
}

long VnTest::countHeldBlocks()
{
    return heldBlocks;
}
