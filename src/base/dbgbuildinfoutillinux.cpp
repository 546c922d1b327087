// dbgbuildinfoutillinux.cpp (Windows form: dbgbuildinfoutilwindows.cpp)
#include <base/dbgbuildinfoutil_p.h>

#include <base/osposix_p.h>

#include <dlfcn.h>
#include <link.h>

namespace Vn::System
{

/// The loader's record of the module that was asked for, compared with the record of the one that holds the address.
/// The module is loaded already, so RTLD_NOLOAD only finds it.
bool isInModule(void* address, char const* file)
{
    void* const module = Posix::openModule(file, RTLD_LAZY | RTLD_NOLOAD, nullptr);
    if (module == nullptr)
        return false;
    ::link_map* asked = nullptr;
    void* found = nullptr;
    ::Dl_info info;
    const bool isIn = ::dlinfo(module, RTLD_DI_LINKMAP, &asked) == 0 &&
                      ::dladdr1(address, &info, &found, RTLD_DL_LINKMAP) != 0 && found == asked;
    // Only the use that this function has added ends; the library stays.
    ::dlclose(module);
    return isIn;
}

}  // namespace Vn::System
