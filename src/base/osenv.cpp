// The environment is the C library's. Setting a variable is in the platform's form, because the libraries disagree on
// who owns the text and what an empty value means. There is no lock: other code in the process reads the environment
// through the C library, which a lock of ours could not stop.
#include <base/osenv.h>

#include <base/exinternalerror.h>
#include <base/osenv_p.h>

#include <cstdlib>
#include <cstring>

namespace Vn
{
namespace
{
constexpr char sourceName[] = "src/base/osenv";
}  // namespace

char const* OsEnv::getVariable(char const* name)
{
    return name != nullptr ? std::getenv(name) : nullptr;  // getenv() of null is undefined behaviour
}

void OsEnv::putVariable(char const* setting)
{
    if (setting == nullptr || !System::putEnvironmentSetting(setting))
        throw ExInternalError(sourceName, __LINE__, "Could not set environment variable");
}

// A variable that must not be trusted looks the same as one that isn't set, so callers need no second path.
char const* System::getOwnVariable(char const* name)
{
    return hasMoreRightsThanItsCaller() ? nullptr : OsEnv::getVariable(name);
}

// Those of the package `debugging`. What else the library reads goes through getOwnVariable() itself.
bool System::isOwnSetting(char const* name)
{
    return std::strcmp(name, "VN_BUILDINFO_NO_VALIDATE") == 0 ||
           std::strcmp(name, "VN_BUILDINFO_CHECK_STAMPS") == 0;
}

}  // namespace Vn
