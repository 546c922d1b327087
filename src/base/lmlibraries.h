#pragma once

#include <base/lmlibrary.h>

#include <vector>

namespace Vn
{

/// The modules that are loaded in this process, for diagnostics.
///
///     for (Vn::LmLibrary const& library : Vn::LmLibraries::getList())
///         std::cout << library.getPath() << '\n';
///
/// On Windows every allocation of the address space that belongs to a module; on Linux every object that the loader
/// knows, with its blocks from the process's own memory map. One thread at a time; what loads meanwhile may be there
/// or not. Paths are cut to 149 characters.
/// Tests: tests/base/lmlibrariestest.cpp.
class VN_BASE_EXPORT LmLibraries
{
public:
    LmLibraries() = delete;

    /// Looks anew, in the order of the addresses. The list is the library's own and lasts until the next call of
    /// either function. Throws ExSysErrorWindows where Linux doesn't show the memory map, and leaves the list empty.
    static std::vector<LmLibrary> const& getList();

    /// Looks anew, and prints the list on the standard output stream.
    static void dumpList();
};

}  // namespace Vn
