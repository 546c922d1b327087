// librarywindows.cpp (Linux form: libraryposix.cpp)
#include "library.h"

#include "child.h"

#include <windows.h>

#include <stdexcept>

namespace VnTest
{

Library::Library(char const* name) : _handle(::LoadLibraryA((getProgramFolder() + "\\lib" + name + ".dll").c_str()))
{
    if (_handle == nullptr)
        throw std::runtime_error("can't load " + std::string(name));
}

Library::~Library()
{
    ::FreeLibrary(static_cast<HMODULE>(_handle));
}

Library::Address Library::findAddress(char const* name) const
{
    return reinterpret_cast<Address>(::GetProcAddress(static_cast<HMODULE>(_handle), name));
}

}  // namespace VnTest
