// A client of the installed library: starts it, and catches one of its exceptions.
#include <base/ininitmgr.h>
#include <base/inpackages.h>
#include <base/invariable.h>

#include <cstdio>
#include <cstring>

namespace VnInit
{
class consumer
{};
}  // namespace VnInit

template <>
class Vn::InInit<VnInit::consumer> : public Vn::InPackageInit
{
    VN_PACKAGE_MEMBERS();
};

VN_DEFINE_PACKAGE(consumer, VnInit::base);

static Vn::InInit<VnInit::consumer> package;
static Vn::InContextAlias<Vn::InInitDef, 0> fallback("from the installed library", "default");
static Vn::InVariable<char const*> greeting("consumer.greeting", package, fallback);

int main(int argc, char** argv)
{
    try {
        char const* const* arguments = argv;
        Vn::InInitGuard guard(argc, arguments);
        Vn::InInit<VnInit::consumer> late;
        std::puts(greeting.getValue());
    } catch (std::runtime_error const& caught) {
        return std::strcmp(caught.what(), "Reinitialize without using the reinitialize guard.") == 0 ? 0 : 1;
    }
    return 2;
}
