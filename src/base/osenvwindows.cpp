// osenvwindows.cpp (Linux form: osenvposix.cpp)
#include <base/osenv_p.h>

#include <stdlib.h>

namespace Vn::System
{

/// Never: a program on Windows has the rights of the user who starts it.
bool hasMoreRightsThanItsCaller()
{
    return false;
}

bool putEnvironmentSetting(char const* setting)
{
    return ::_putenv(setting) == 0;  // copies; unsets for "NAME="; refuses a text without "="
}

}  // namespace Vn::System
