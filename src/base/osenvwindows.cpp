// osenvwindows.cpp (Linux form: osenvposix.cpp)
#include <base/osenv_p.h>

#include <stdlib.h>

namespace Vn::System
{

/// Windows gives a program the rights of whoever starts it.
bool hasMoreRightsThanItsCaller()
{
    return false;
}

bool putEnvironmentSetting(char const* setting)
{
    return ::_putenv(setting) == 0;
}

}  // namespace Vn::System
