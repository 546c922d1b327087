// osenvposix.cpp (Windows form: osenvwindows.cpp)
//
// putenv() would keep the caller's array as part of the environment, so setenv() is used, which copies. "NAME="
// unsets the variable, as Windows' _putenv() does. The name must not be empty; both calls refuse that with EINVAL.
#include <base/osenv_p.h>

#include <sys/auxv.h>

#include <cstdlib>
#include <cstring>
#include <string>

namespace Vn::System
{

/// The kernel sets AT_SECURE for a program that gained a user, a group or capabilities when it was started. The C
/// library uses the same flag to ignore variables such as LD_PRELOAD.
bool hasMoreRightsThanItsCaller()
{
    return ::getauxval(AT_SECURE) != 0;
}

bool putEnvironmentSetting(char const* setting)
{
    char const* const sign = std::strchr(setting, '=');
    if (sign == nullptr)
        return false;
    const std::string name(setting, sign);  // the calls refuse an empty one
    return (sign[1] == '\0' ? ::unsetenv(name.c_str()) : ::setenv(name.c_str(), sign + 1, 1)) == 0;
}

}  // namespace Vn::System
