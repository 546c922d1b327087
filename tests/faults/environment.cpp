// Stands in for what the C library tells of the environment, in this program and in the libraries that it uses.
#include "environment.h"

#include "real.h"

#include <dlfcn.h>
#include <sys/auxv.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <cstring>

namespace
{
thread_local VnTest::WatchedEnvironment* watch = nullptr;
std::atomic<bool> hasMoreRights = false;

/// Without dlsym(), which sanitizers' start-up code asks before it works.
char* find(char const* name)
{
    const std::size_t length = std::strlen(name);
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry)
        if (std::strncmp(*entry, name, length) == 0 && (*entry)[length] == '=')
            return *entry + length + 1;
    return nullptr;
}
}  // namespace

#define VN_STAND_IN extern "C" __attribute__((visibility("default")))

VN_STAND_IN char* getenv(char const* name) noexcept
{
    if (watch != nullptr)
        watch->note(name);
    return find(name);
}

VN_STAND_IN unsigned long getauxval(unsigned long type) noexcept
{
    if (type == AT_SECURE && hasMoreRights)
        return 1;
    return VN_REAL(getauxval)(type);
}

VnTest::WatchedEnvironment::WatchedEnvironment()
{
    watch = this;
}

VnTest::WatchedEnvironment::~WatchedEnvironment()
{
    watch = nullptr;
}

VnTest::MoreRights::MoreRights()
{
    hasMoreRights = true;
}

VnTest::MoreRights::~MoreRights()
{
    hasMoreRights = false;
}
