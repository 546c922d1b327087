// libraryposix.cpp (Windows form: librarywindows.cpp)
#include "library.h"

#include "child.h"

#include <dlfcn.h>

#include <cstring>
#include <stdexcept>

namespace VnTest
{

Library::Library(char const* name)
    : _handle(::dlopen((getProgramFolder() + "/lib" + name + ".so").c_str(), RTLD_NOW | RTLD_LOCAL))
{
    if (_handle == nullptr)
        throw std::runtime_error(::dlerror());
}

Library::~Library()
{
    ::dlclose(_handle);
}

Library::Address Library::findAddress(char const* name) const
{
    void* const found = ::dlsym(_handle, name);
    Address address = nullptr;
    std::memcpy(&address, &found, sizeof address);
    return address;
}

}  // namespace VnTest
