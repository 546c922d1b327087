#pragma once

#include <base/lmlibrary.h>

#include <vector>

namespace Vn
{

/// Lists the modules that are loaded in this process, for diagnostics.
///
///     for (Vn::LmLibrary const& library : Vn::LmLibraries::getList())
///         std::cout << library.getPath() << '\n';
///
/// Linux: every object that the loader knows, its blocks taken from the process's memory map. Windows: every
/// allocation of the address space that belongs to a module. Both include the program itself. Paths are cut to 149
/// characters.
///
/// One thread at a time, for both functions together. Modules that other threads load meanwhile may be missing.
/// Tests: tests/base/lmlibrariestest.cpp.
class VN_BASE_EXPORT LmLibraries
{
public:
    LmLibraries() = delete;

    /// The modules as they are now, in the order of their addresses. The library owns the list; the next call of
    /// either function replaces it. Throws ExSysErrorWindows if Linux does not show the memory map (no /proc), or
    /// std::bad_alloc; the list is then empty.
    static std::vector<LmLibrary> const& getList();

    /// Lists anew and prints on `std::cout`:
    ///
    ///     Library: 0
    ///             Library path: /usr/bin/app
    ///             Address: 0x55d0c0a00000
    ///
    ///             Block: 0
    ///                     Address: 0x55d0c0a00000
    ///                     Size:    4096
    ///                     Flags:   READ
    ///
    /// Sizes are shown as 32-bit signed numbers, so one from 2 GiB on is negative or cut. Throws as getList().
    static void dumpList();
};

}  // namespace Vn
