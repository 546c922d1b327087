// swatch: looks up colours by name. Shows a program that links a second library of the family, which registers itself:
//
//     swatch NAME...     the colours of those names
//     swatch -v          the libraries that have registered, once all have started
//     swatch --version   the same libraries, each asked without a start
#include "swatch.h"

#include <base/dbgbuildinfomgr.h>
#include <base/incontextaliasmgr.h>
#include <base/ininitmgr.h>
#include <base/inpackages.h>
#include <base/inusage.h>
#include <base/invariable.h>
#include <base/osterminal.h>

#include <cstdio>
#include <exception>
#include <iostream>

namespace VnInit
{
class swatchProgram
{};
}  // namespace VnInit

template <>
class Vn::InInit<VnInit::swatchProgram> : public Vn::InPackageInit
{
    VN_PACKAGE_MEMBERS();
};

VN_DEFINE_PACKAGE(swatchProgram, VnInit::swatch);

namespace
{
Vn::InInit<VnInit::swatchProgram> package;

const Vn::InContextAlias<Vn::InInitArg, 1> librariesOption("v", "-v: print the libraries that have registered");
const Vn::InContextAlias<Vn::InInitDef, 0> librariesDefault("false", "default");
Vn::InVariable<bool> wantsLibraries("swatch.libraries", package, librariesOption, librariesDefault);

bool printColour(char const* name)
{
    Swatch::Colour colour = {};
    if (!Swatch::find(name, colour)) {
        std::cout << Vn::OsTerminal::shown(name) << "  unknown\n";
        return false;
    }
    char text[8];
    std::snprintf(text, sizeof text, "#%02x%02x%02x", colour.red, colour.green, colour.blue);
    std::cout << name << "  " << text << "\n";
    return true;
}
}  // namespace

int main(int argc, char** argv)
{
    const Vn::InUsage usage = Vn::InUsage("Looks up colours by name.")
                                  .operands("[NAME]...")
                                  .note("Exit code: 0 if all names are known, 1 if one is not, 2 for wrong use.");
    if (auto const end = usage.handle(argc, argv))
        return *end;
    try {
        char const* const* arguments = argv;
        Vn::InInitGuard guard(argc, arguments);
        if (wantsLibraries.getValue()) {
            Vn::DbgBuildInfoMgr::printBuildInfo(std::cout, false);
            return 0;
        }
        Vn::Vector<char*> const& names = Vn::InContextAliasMgrBase::getUnboundArgs();
        bool areKnown = true;
        for (std::size_t i = 1; i < names.size(); ++i)
            areKnown &= printColour(names[i]);
        return areKnown ? 0 : 1;
    } catch (std::exception const& failure) {
        std::cerr << "swatch: " << Vn::OsTerminal::shown(failure.what()) << "\n";
        return 1;
    }
}
