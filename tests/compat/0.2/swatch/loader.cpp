// swatchloader: loads libraries of the family by their names, starts them late, and prints what the process is made of
// then. Shows what becomes of a library that the others can't be used with:
//
//     swatchloader swatch swatchold
//     VN_BUILDINFO_NO_VALIDATE=1 swatchloader swatch swatchold
//     VN_BUILDINFO_NO_VALIDATE=1 VN_BUILDINFO_CHECK_STAMPS=1 swatchloader swatch swatchold
#include <base/dbgbuildinfomgr.h>
#include <base/dbgbuildinfoutil.h>
#include <base/incontextaliasmgr.h>
#include <base/ininitmgr.h>
#include <base/inpackages.h>
#include <base/ossharedlib.h>

#include <cstring>
#include <exception>
#include <iostream>
#include <string>

namespace
{
/// Loads and registers the library `name`, and starts its packages. False if it is refused.
bool load(char const* name)
{
    Vn::InReinitGuard guard;
    try {
        Vn::DbgBuildInfoUtil::registerModule(name);
        std::cout << name << ": registered\n";
        return true;
    } catch (std::exception const& failure) {
        std::cout << name << ": " << failure.what() << "\n";
        return false;
    }
}

/// A function of a library that this program wasn't built with.
void useSwatch()
{
    const std::string file = std::string("libVNswatch") + Vn::OsSharedLib::getSuffix();
    Vn::ObjPtr<Vn::OsSharedLib> const library = Vn::OsSharedLib::open(file.c_str());
    void* const address = library->getFunction("vnSwatchNearestName");
    char const* (*nearestName)(int, int, int);
    static_assert(sizeof nearestName == sizeof address);
    std::memcpy(&nearestName, &address, sizeof address);
    std::cout << "250, 120, 130 is nearly " << nearestName(250, 120, 130) << "\n";
}
}  // namespace

int main(int argc, char** argv)
{
    try {
        char const* const* arguments = argv;
        Vn::InInitGuard guard(argc, arguments);
        Vn::Vector<char*> const& names = Vn::InContextAliasMgrBase::getUnboundArgs();
        bool areTaken = true;
        for (std::size_t i = 1; i < names.size(); ++i) {
            const bool isTaken = load(names[i]);
            if (isTaken && std::strcmp(names[i], "swatch") == 0)
                useSwatch();
            areTaken &= isTaken;
        }
        Vn::DbgBuildInfoMgr::printBuildInfo(std::cout, false);
        return areTaken ? 0 : 1;
    } catch (std::exception const& failure) {
        std::cerr << "swatchloader: " << failure.what() << "\n";
        return 1;
    }
}
