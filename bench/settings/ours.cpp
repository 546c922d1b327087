// A thousand settings, or none, as a program declares them: from the environment, with a default. Prints the nanoseconds
// from before the first one to the end of the start.
#include "repeat.h"

#include <base/ininit.h>
#include <base/ininitmgr.h>
#include <base/inpackages.h>
#include <base/invariable.h>

#include <chrono>
#include <cstdio>

namespace VnInit
{
class benchSettings
{};
}  // namespace VnInit

template <>
class Vn::InInit<VnInit::benchSettings> : public Vn::InPackageInit
{
    VN_PACKAGE_MEMBERS();
};

VN_DEFINE_PACKAGE(benchSettings, VnInit::initialize);

namespace
{
const std::chrono::steady_clock::time_point begun = std::chrono::steady_clock::now();

Vn::InInit<VnInit::benchSettings> package;

#define SETTING(NAME)                                                              \
    const Vn::InContextAlias<Vn::InInitEnv, 1> NAME##Variable(#NAME, "a setting"); \
    const Vn::InContextAlias<Vn::InInitDef, 0> NAME##Default("17", "default");     \
    const Vn::InVariable<int> NAME("settings." #NAME, package, NAME##Variable, NAME##Default);
REPEAT_COUNTED(SETTING)
}  // namespace

int main(int argc, char** argv)
{
    char const* const* arguments = argv;
    const Vn::InInitGuard guard(argc, arguments);
    const auto ended = std::chrono::steady_clock::now();
    std::printf("%f\n", std::chrono::duration<double, std::nano>(ended - begun).count());
    return 0;
}
