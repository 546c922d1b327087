// A thousand settings, or none, as a program declares them: from the environment, with a default. Prints the nanoseconds
// from before the first one to the end of the start. With COPIES, in place of the settings, only what a thousand of them
// store: each source its two texts, each variable its handle, clones of its sources and their values.
#include "repeat.h"

#include <base/ininit.h>
#include <base/ininitmgr.h>
#include <base/inpackages.h>
#include <base/invariable.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <new>

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

#ifdef COPIES
/// Memory that the compiler takes for used.
void* allocate(std::size_t size)
{
    void* place = ::operator new(size);
    asm volatile("" : "+r"(place) : : "memory");
    return place;
}

void copyText(char const* text)
{
    const std::size_t size = std::strlen(text) + 1;
    std::memcpy(allocate(size), text, size);
}

template <class Source>
void copySource(char const* name, char const* description, char const* value)
{
    for (int i = 0; i < 2; ++i) {  // itself, and the variable's clone
        copyText(name);
        copyText(description);
    }
    std::memset(allocate(sizeof(Source)), 1, sizeof(Source));  // the clone
    copyText(value);
}

void copyAll()
{
    for (int i = 0; i < COPIES; ++i) {
        copySource<Vn::InContextAlias<Vn::InInitEnv, 1>>("bench_setting_000", "a setting", "17");
        copySource<Vn::InContextAlias<Vn::InInitDef, 0>>("17", "default", "17");
        copyText("settings.bench_setting_000");
    }
}
#endif
}  // namespace

int main(int argc, char** argv)
{
#ifdef COPIES
    copyAll();
#endif
    char const* const* arguments = argv;
    const Vn::InInitGuard guard(argc, arguments);
    const auto ended = std::chrono::steady_clock::now();
    std::printf("%f\n", std::chrono::duration<double, std::nano>(ended - begun).count());
    return 0;
}
