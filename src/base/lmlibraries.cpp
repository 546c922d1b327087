#include <base/lmlibraries.h>

#include <base/exsyserror.h>
#include <base/lmlibraries_p.h>
#include <base/lmtext_p.h>

#include <iostream>

namespace Vn
{
namespace
{
constexpr char const* sourceName = "src/base/lmlibraries";

std::vector<LmLibrary>& rebuild()
{
    static std::vector<LmLibrary>& libraries = *new std::vector<LmLibrary>;
    libraries.clear();
    try {
        if (!System::addLoadedModules(libraries))
            throw ExSysErrorWindows(sourceName, __LINE__);
    } catch (...) {
        libraries.clear();
        throw;
    }
    return libraries;
}
}  // namespace

std::vector<LmLibrary> const& LmLibraries::getList()
{
    return rebuild();
}

void LmLibraries::dumpList()
{
    std::cout << LmText::of(rebuild());
}

}  // namespace Vn
