// greeter: settings of three types from four kinds of sources. Its page is docs/settings.md.
#include <base/ininitmgr.h>
#include <base/inpackages.h>
#include <base/inusage.h>
#include <base/invariable.h>
#include <base/osterminal.h>

#include <chrono>
#include <iostream>
#include <string>
#include <thread>

namespace VnInit
{
class greeter
{};
}  // namespace VnInit

template <>
class Vn::InInit<VnInit::greeter> : public Vn::InPackageInit
{
    VN_PACKAGE_MEMBERS();
};

VN_DEFINE_PACKAGE(greeter, VnInit::base);

static Vn::InInit<VnInit::greeter> package;

using Option = Vn::InContextAlias<Vn::InInitArg, 1>;
using Environment = Vn::InContextAlias<Vn::InInitEnv, 1>;
using Default = Vn::InContextAlias<Vn::InInitDef, 0>;

static Vn::InVariable<std::string> name("greeter.name", package, Option("n:", "-n NAME: whom to greet"),
                                        Environment("GREETER_NAME", "the same in the environment"),
                                        Default("world", "default"));
static Vn::InVariable<int> times("greeter.times", package, Option("c:", "-c TIMES: how often"),
                                 Default("1", "default"));
static Vn::InVariable<std::chrono::milliseconds>
    interval("greeter.interval", package, Environment("GREETER_INTERVAL", "the time between greetings"),
             Default("1ms", "default"));

int main(int argc, char** argv)
{
    bool isHurried = false;
    const Vn::InUsage usage =
        Vn::InUsage("Greets somebody.").word("--hurry", "no time between greetings", isHurried);
    if (auto const end = usage.handle(argc, argv))
        return *end;
    if (isHurried)
        Vn::InVariableBase::overrideViaHandle("greeter.interval", "0", "--hurry");

    char const* const* arguments = argv;
    Vn::InInitGuard guard(argc, arguments);
    for (int i = 0; i < times.getValue(); ++i) {
        if (i > 0)
            std::this_thread::sleep_for(interval.getValue());
        std::cout << "Hello, " << Vn::OsTerminal::shown(name.getValue()) << "!\n";
    }
    const std::string source = interval.initSource();
    if (source != Default::initSourceString())
        std::cout << interval.getValue().count() << " ms between greetings, by "
                  << (source == Environment::initSourceString() ? "GREETER_INTERVAL" : "--hurry") << "\n";
}
