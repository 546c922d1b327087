// libraryposix.cpp (Windows form: librarywindows.cpp)
#include "library.h"

#include "child.h"

#include <dlfcn.h>

#include <cstring>
#include <stdexcept>

namespace VnTest
{

namespace
{
std::string pathOf(char const* name)
{
    return getProgramFolder() + "/lib" + name + ".so";
}
}  // namespace

Library::Library(char const* name) : _handle(::dlopen(pathOf(name).c_str(), RTLD_NOW | RTLD_LOCAL))
{
    if (_handle == nullptr)
        throw std::runtime_error(::dlerror());
}

Library::~Library()
{
    ::dlclose(_handle);
}

bool Library::isLoaded(char const* name)
{
    void* const handle = ::dlopen(pathOf(name).c_str(), RTLD_NOW | RTLD_NOLOAD);
    if (handle != nullptr)
        ::dlclose(handle);
    return handle != nullptr;
}

Library::Address Library::findAddress(char const* name) const
{
    void* const found = ::dlsym(_handle, name);
    Address address = nullptr;
    std::memcpy(&address, &found, sizeof address);
    return address;
}

}  // namespace VnTest
