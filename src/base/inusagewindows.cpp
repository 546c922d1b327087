// inusagewindows.cpp (Linux form: inusagelinux.cpp)
//
// The loader's list of modules, and in each module of the family the entry that it exports. GetProcAddress() looks into that
// module alone, so an entry that is found is the module's own.
#include <base/inusage_p.h>

#include <windows.h>

#include <psapi.h>

#include <cstring>

namespace Vn::System
{
namespace
{
/// Without its folder.
std::string fileNameOf(::HMODULE module)
{
    char name[MAX_PATH] = {};
    ::K32GetModuleBaseNameA(::GetCurrentProcess(), module, name, sizeof name - 1);
    return name;
}

/// Names of files don't differ by case here.
bool isOfFamily(std::string const& fileName)
{
    constexpr char prefix[] = "libvn";
    for (std::size_t i = 0; prefix[i] != '\0'; ++i)
        if (i >= fileName.size() || (fileName[i] | 0x20) != prefix[i])
            return false;
    return true;
}

/// As many as there were room for the first time, and all the second time; others may load modules in between.
std::vector<::HMODULE> getModules()
{
    std::vector<::HMODULE> modules(256);
    for (int attempt = 0; attempt < 2; ++attempt) {
        const auto room = static_cast<::DWORD>(modules.size() * sizeof(::HMODULE));
        ::DWORD needed = 0;
        if (!::K32EnumProcessModules(::GetCurrentProcess(), modules.data(), room, &needed))
            return {};
        const bool isWhole = needed <= room;
        if (isWhole || attempt == 0)
            modules.resize(needed / sizeof(::HMODULE));
        if (isWhole)
            break;
    }
    return modules;
}
}  // namespace

std::vector<FamilyLibrary> getFamilyLibraries()
{
    std::vector<FamilyLibrary> libraries;
    for (::HMODULE module : getModules()) {
        FamilyLibrary library = {fileNameOf(module), nullptr};
        ::FARPROC const address = isOfFamily(library.fileName) ? ::GetProcAddress(module, "getBuildInfo") : nullptr;
        if (address == nullptr)
            continue;
        static_assert(sizeof library.getBuildInfo == sizeof address);
        std::memcpy(&library.getBuildInfo, &address, sizeof address);
        libraries.push_back(library);
    }
    return libraries;
}

}  // namespace Vn::System
