// osenvposix.cpp (Windows form: osenvwindows.cpp)
#include <base/osenv_p.h>

#include <sys/auxv.h>

#include <cstdlib>
#include <cstring>
#include <string>

namespace Vn::System
{

/// The kernel's own word on it, which the C library goes by as well: of the user, the group, or capabilities.
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
