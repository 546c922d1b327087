#pragma once

#include <windows.h>

namespace VnTest
{

/// Whether it is Wine that answers. Tests state what Windows does; where Wine differs, they allow for it by name.
inline bool isWine()
{
    const HMODULE library = ::GetModuleHandleA("ntdll.dll");
    return library != nullptr && ::GetProcAddress(library, "wine_get_version") != nullptr;
}

}  // namespace VnTest
