#include <base/ininitmgr.h>
#include <base/inpackages.h>
#include <base/invariable.h>
#include <iostream>

namespace VnInit { class greeter {}; }

template <>
class Vn::InInit<VnInit::greeter> : public Vn::InPackageInit { VN_PACKAGE_MEMBERS(); };

VN_DEFINE_PACKAGE(greeter, VnInit::base);

static Vn::InInit<VnInit::greeter> package;
static Vn::InContextAlias<Vn::InInitArg, 1> option("n:", "-n NAME: whom to greet");
static Vn::InContextAlias<Vn::InInitEnv, 1> variable("GREETER_NAME", "the same in the environment");
static Vn::InContextAlias<Vn::InInitDef, 0> fallback("world", "default");
static Vn::InVariable<char const*> name("greeter.name", package, option, variable, fallback);

int main(int argc, char** argv)
{
    char const* const* arguments = argv;
    Vn::InInitGuard guard(argc, arguments);
    std::cout << "Hello, " << name.getValue() << "!\n";
}
