// Stands in for the C library's functions that walk, and for the C++ library's that hashes. Sanitizers know these by heart, and start later than their first call.
#include "countedcalls.h"

#include <cstddef>
#include <typeinfo>

extern "C" char** environ;

#if defined(__clang__)
#    define VN_STAND_IN \
        extern "C" __attribute__((visibility("default"), no_sanitize("address", "thread", "undefined")))
#else
#    define VN_STAND_IN                                                                                 \
        extern "C" __attribute__((visibility("default"), no_sanitize("address", "thread", "undefined"), \
                                  optimize("no-tree-loop-distribute-patterns")))
#endif

namespace
{
unsigned long steps = 0;
}  // namespace

unsigned long VnTest::getSteps()
{
    return steps;
}

VN_STAND_IN void* memcpy(void* target, void const* source, std::size_t size)
{
    char* const to = static_cast<char*>(target);
    char const* const from = static_cast<char const*>(source);
    for (std::size_t i = 0; i < size; ++i)
        to[i] = from[i];
    steps += size;
    return target;
}

VN_STAND_IN void* memmove(void* target, void const* source, std::size_t size)
{
    char* const to = static_cast<char*>(target);
    char const* const from = static_cast<char const*>(source);
    if (to < from)
        for (std::size_t i = 0; i < size; ++i)
            to[i] = from[i];
    else
        for (std::size_t i = size; i > 0; --i)
            to[i - 1] = from[i - 1];
    steps += size;
    return target;
}

VN_STAND_IN int strcmp(char const* left, char const* right)
{
    while (*left != '\0' && *left == *right)
        ++left, ++right;
    ++steps;
    return static_cast<unsigned char>(*left) - static_cast<unsigned char>(*right);
}

/// The hash of a type's name, and of texts: as the C++ library's, a function of all bytes.
__attribute__((visibility("default"))) std::size_t std::_Hash_bytes(void const* data, std::size_t size,
                                                                    std::size_t seed)
{
    char const* const from = static_cast<char const*>(data);
    std::size_t hash = seed;
    for (std::size_t i = 0; i < size; ++i)
        hash = (hash ^ static_cast<unsigned char>(from[i])) * 0x100000001B3;
    steps += size;
    return hash;
}

VN_STAND_IN char* getenv(char const* name)
{
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
        ++steps;
        char* end = *entry;
        char const* letter = name;
        while (*letter != '\0' && *end == *letter)
            ++end, ++letter;
        if (*letter == '\0' && *end == '=' && *name != '\0')
            return end + 1;
    }
    return nullptr;
}
