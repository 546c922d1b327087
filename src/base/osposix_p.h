// Private to the library.
#pragma once

// For the Linux forms only: no portable source includes this.
#include <base/osfiletypes.h>

#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <string>

namespace Vn::Posix
{

/// Repeats a call that answers -1 for as long as it is interrupted.
template <class Call>
auto retry(Call const& call)
{
    for (;;) {
        const auto result = call();
        if (result != -1 || errno != EINTR)
            return result;
    }
}

/// Closes a descriptor whatever happens; `errno` stays that of the call before.
class Descriptor
{
public:
    explicit Descriptor(int number = -1) : _number(number) {}
    Descriptor(Descriptor const&) = delete;
    Descriptor& operator=(Descriptor const&) = delete;
    ~Descriptor() { reset(); }

    bool isOpen() const { return _number != -1; }
    int get() const { return _number; }

    void reset(int number = -1)
    {
        const int error = errno;
        if (_number != -1)
            ::close(_number);
        errno = error;
        _number = number;
    }

private:
    int _number;
};

/// `file`, or a descriptor in its place that isn't one of the standard ones: where a program has closed these, what it writes
/// to its standard output would end in a file of ours. -1, with the file closed, if the system has none left.
int liftAboveStandard(int file);

/// open(), with the descriptor closed in children and above the standard ones.
int openFile(char const* path, int flags, ::mode_t mode = 0);

/// The bits of a new file's mode.
::mode_t modeOf(OsFileTypes::Permissions const& permissions);

/// Name of the user, or the number in decimal where it has none. False, with `errno` set, if the system can't tell.
bool findUserName(::uid_t user, std::string& name);

/// dlopen(), and for a name without a folder a second try in this library's own. The first finds it there, too, unless
/// somebody has put himself between us and the system, as the sanitizers do. Null, with the first reason in `reason` if
/// that isn't null, where neither succeeds.
void* openModule(char const* file, int flags, std::string* reason);

}  // namespace Vn::Posix
