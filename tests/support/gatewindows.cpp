// gatewindows.cpp (POSIX form: gateposix.cpp)
#include "gate.h"

#include <windows.h>

#include <stdexcept>
#include <utility>

namespace VnTest
{
namespace
{
/// A name of a kernel object holds no separator.
::HANDLE eventOf(std::string name)
{
    for (char& character : name)
        if (character == '\\' || character == '/' || character == ':')
            character = '_';
    const ::HANDLE event = ::CreateEventA(nullptr, TRUE, FALSE, name.c_str());
    if (event == nullptr)
        throw std::runtime_error("no gate " + name);
    return event;
}
}  // namespace

Gate::Gate(std::string name) : _name(std::move(name)), _handle(eventOf(_name)) {}

Gate::~Gate()
{
    ::CloseHandle(_handle);
}

void Gate::open(std::string const& name)
{
    const ::HANDLE event = eventOf(name);
    ::SetEvent(event);
    ::CloseHandle(event);
}

void Gate::wait(std::string const& name)
{
    const ::HANDLE event = eventOf(name);
    ::WaitForSingleObject(event, INFINITE);
    ::CloseHandle(event);
}

}  // namespace VnTest
