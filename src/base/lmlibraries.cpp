// Both functions rebuild the one list and differ in what they do with it. The list is never destroyed, so that code
// that runs while the process exits can still ask for it. It has no lock: a caller holds a reference into it, which
// no lock of ours could protect.
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

/// The list, filled anew; its storage is reused. Empty after an exception, so that no caller sees half a list.
std::vector<LmLibrary>& rebuild()
{
    // Allocated and never freed: a static vector would be destroyed before the last code that may ask for it.
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

// The reference is always to the same list; its content is that of the last call.
std::vector<LmLibrary> const& LmLibraries::getList()
{
    return rebuild();
}

void LmLibraries::dumpList()
{
    std::cout << LmText::of(rebuild());  // the whole text is made first: an exception prints nothing
}

}  // namespace Vn
