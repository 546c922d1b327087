#include <base/osenv.h>

#include <base/exinternalerror.h>
#include <base/osenv_p.h>

#include <cstdlib>

namespace Vn
{
namespace
{
constexpr char sourceName[] = "src/base/osenv";
}  // namespace

char const* OsEnv::getVariable(char const* name)
{
    return name != nullptr ? std::getenv(name) : nullptr;
}

void OsEnv::putVariable(char const* setting)
{
    if (setting == nullptr || !System::putEnvironmentSetting(setting))
        throw ExInternalError(sourceName, __LINE__, "Could not set environment variable");
}

char const* System::getOwnVariable(char const* name)
{
    return hasMoreRightsThanItsCaller() ? nullptr : OsEnv::getVariable(name);
}

}  // namespace Vn
