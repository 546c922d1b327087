// librarywindows.cpp (Linux form: libraryposix.cpp)
#include "library.h"

#include "child.h"

#include <windows.h>

#include <stdexcept>

namespace VnTest
{

namespace
{
std::string pathOf(char const* name)
{
    return getProgramFolder() + "\\lib" + name + ".dll";
}
}  // namespace

Library::Library(char const* name) : _handle(::LoadLibraryA(pathOf(name).c_str()))
{
    if (_handle == nullptr)
        throw std::runtime_error("can't load " + std::string(name));
}

Library::~Library()
{
    ::FreeLibrary(static_cast<HMODULE>(_handle));
}

bool Library::isLoaded(char const* name)
{
    return ::GetModuleHandleA(pathOf(name).c_str()) != nullptr;
}

Library::Address Library::findAddress(char const* name) const
{
    return reinterpret_cast<Address>(::GetProcAddress(static_cast<HMODULE>(_handle), name));
}

}  // namespace VnTest
