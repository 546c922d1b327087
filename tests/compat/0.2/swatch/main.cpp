// swatch: looks up colours by name. Shows a program that links a second library of the family, which registers itself:
//
//     swatch NAME...     the colours of those names
//     swatch -v          the libraries that the program is made of
#include "swatch.h"

#include <base/dbgbuildinfomgr.h>
#include <base/incontextaliasmgr.h>
#include <base/ininitmgr.h>

#include <cstdio>
#include <cstring>
#include <exception>
#include <iostream>

namespace
{
bool printColour(char const* name)
{
    Swatch::Colour colour = {};
    if (!Swatch::find(name, colour)) {
        std::cout << name << "  unknown\n";
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
    try {
        const bool isVersionWanted = argc == 2 && std::strcmp(argv[1], "-v") == 0;
        char const* const* arguments = argv;
        Vn::InInitGuard guard(argc, arguments);
        if (isVersionWanted) {
            Vn::DbgBuildInfoMgr::printBuildInfo(std::cout, false);
            return 0;
        }
        Vn::Vector<char*> const& names = Vn::InContextAliasMgrBase::getUnboundArgs();
        bool areKnown = true;
        for (std::size_t i = 1; i < names.size(); ++i)
            areKnown &= printColour(names[i]);
        return areKnown ? 0 : 1;
    } catch (std::exception const& failure) {
        std::cerr << "swatch: " << failure.what() << "\n";
        return 1;
    }
}
