// inusagewindows.cpp (Linux form: inusagelinux.cpp)
#include <base/inusage_p.h>

#include <windows.h>

#include <psapi.h>

#include <cstring>

namespace Vn::System
{
namespace
{
/// Names of files don't differ by case here.
bool isOfFamily(::HMODULE module)
{
    constexpr char prefix[] = "libvn";
    char name[MAX_PATH] = {};
    ::K32GetModuleBaseNameA(::GetCurrentProcess(), module, name, sizeof name - 1);
    for (std::size_t i = 0; prefix[i] != '\0'; ++i)
        if ((name[i] | 0x20) != prefix[i])
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

std::vector<BuildInfoEntry> getBuildInfoEntries()
{
    std::vector<BuildInfoEntry> entries;
    for (::HMODULE module : getModules()) {
        if (!isOfFamily(module))
            continue;
        if (::FARPROC const address = ::GetProcAddress(module, "getBuildInfo")) {
            BuildInfoEntry entry;
            static_assert(sizeof entry == sizeof address);
            std::memcpy(&entry, &address, sizeof entry);
            entries.push_back(entry);
        }
    }
    return entries;
}

}  // namespace Vn::System
