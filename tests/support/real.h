#pragma once

#include <dlfcn.h>

#include <atomic>

namespace VnTest
{

/// The C library's own function, for one that stands in for it.
template <class Function>
Function* findReal(Function*, char const* name)
{
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

/// The same, as `found` has it from the first time on.
template <class Function>
Function* findReal(Function* function, char const* name, std::atomic<void (*)()>& found)
{
    auto address = found.load();
    if (address == nullptr)
        found = address = reinterpret_cast<void (*)()>(findReal(function, name));
    return reinterpret_cast<Function*>(address);
}

}  // namespace VnTest

/// Looked up once: two processes that share memory must not look up at the same time. Without the guard of a static object, for
/// which some C++ libraries call such a function.
#define VN_REAL(NAME)                                         \
    ([] {                                                     \
        static constinit std::atomic<void (*)()> foundBefore; \
        return VnTest::findReal(&::NAME, #NAME, foundBefore); \
    }())
