// gateposix.cpp (Windows form: gatewindows.cpp)
#include "gate.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <utility>

namespace VnTest
{
namespace
{
/// Each end of a named pipe waits for the other one to be opened.
void meet(std::string const& name, int flags)
{
    int end;
    do {
        end = ::open(name.c_str(), flags | O_CLOEXEC);
    } while (end == -1 && errno == EINTR);
    if (end == -1)
        throw std::runtime_error("no gate " + name);
    ::close(end);
}
}  // namespace

Gate::Gate(std::string name) : _name(std::move(name)), _handle(nullptr)
{
    if (::mkfifo(_name.c_str(), 0600) != 0)
        throw std::runtime_error("no gate " + _name);
}

Gate::~Gate()
{
    ::unlink(_name.c_str());
}

void Gate::open(std::string const& name)
{
    meet(name, O_WRONLY);
}

void Gate::wait(std::string const& name)
{
    meet(name, O_RDONLY);
}

}  // namespace VnTest
