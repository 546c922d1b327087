// dbgbuildinfoutilwindows.cpp (POSIX form: dbgbuildinfoutillinux.cpp)
#include <base/dbgbuildinfoutil_p.h>

#include <windows.h>

namespace Vn::System
{

/// Neither call adds a use of the module, so none has to be given back.
bool isInModule(void* address, char const* file)
{
    ::HMODULE found = nullptr;
    constexpr ::DWORD flags = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    return ::GetModuleHandleExA(flags, static_cast<char const*>(address), &found) != 0 &&
           found == ::GetModuleHandleA(file);
}

}  // namespace Vn::System
