// lmlibrarieswindows.cpp (POSIX form: lmlibrarieslinux.cpp)
//
// LmWalk holds the rules; this form makes its three system calls. The queries go to a handle of the process that is
// opened at the first use and never closed: one handle serves all walks, and an exiting process gives it back.
#include <base/lmlibraries_p.h>

#include <base/lmwalk_p.h>

#include <windows.h>

namespace Vn::System
{
namespace
{
/// This process, as VirtualQueryEx() describes it.
class OwnAddressSpace final : public LmAddressSpace
{
public:
    // Intended: the handle is not closed. Do not mend: it serves every walk until the process ends.
    OwnAddressSpace() : _process(::OpenProcess(PROCESS_QUERY_INFORMATION, FALSE, ::GetCurrentProcessId())) {}

    bool query(std::uintptr_t address, Region& region) const override
    {
        ::MEMORY_BASIC_INFORMATION found;
        if (::VirtualQueryEx(_process, reinterpret_cast<void const*>(address), &found, sizeof found) !=
            sizeof found)
            return false;
        region = {reinterpret_cast<std::uintptr_t>(found.BaseAddress),
                  reinterpret_cast<std::uintptr_t>(found.AllocationBase),
                  found.RegionSize,
                  found.State,
                  found.Protect,
                  found.AllocationProtect};
        return true;
    }

    bool getModuleName(std::uintptr_t base, char (&name)[nameSize]) const override
    {
        const ::DWORD length = ::GetModuleFileNameA(reinterpret_cast<::HMODULE>(base), name, nameSize);
        name[nameSize - 1] = '\0';  // older systems don't terminate a name that they cut
        return length != 0;
    }

    void reportUnknownState() const override { ::DebugBreak(); }

private:
    ::HANDLE _process;
};

// The walk was written for this layout; a 32-bit build has another one.
static_assert(sizeof(::MEMORY_BASIC_INFORMATION) == 48);
}  // namespace

bool addLoadedModules(std::vector<LmLibrary>& libraries)
{
    // Always true: the walk ends at the first query that fails, and that is the end of the address space.
    static const OwnAddressSpace space;
    LmWalk(space).addModules(libraries);
    return true;
}

}  // namespace Vn::System
