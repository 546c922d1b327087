#pragma once

// For the Linux forms only: no portable source includes this.
#include <base/osfiletypes.h>

#include <sys/types.h>
#include <time.h>
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

/// The clock of sleeps.
inline ::timespec now()
{
    ::timespec time = {};
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    return time;
}

/// Blocks until `due` on the clock of now(), whatever signals arrive: what a signal interrupts goes on to the same
/// moment, so that what each interruption takes doesn't add up.
inline void sleepUntil(::timespec const& due)
{
    while (::clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &due, nullptr) == EINTR)
        continue;
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

    /// The number, which is the caller's to close.
    int release()
    {
        const int number = _number;
        _number = -1;
        return number;
    }

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

/// The bits of a new file's mode.
::mode_t modeOf(OsFileTypes::Permissions const& permissions);

/// Name of the user, or the number in decimal where it has none. False, with `errno` set, if the system can't tell.
bool findUserName(::uid_t user, std::string& name);

/// dlopen(), and for a name without a folder a second try in this library's own. The first finds it there, too, unless
/// somebody has put himself between us and the system, as the sanitizers do. Null, with the first reason in `reason` if
/// that isn't null, where neither succeeds.
void* openModule(char const* file, int flags, std::string* reason);

}  // namespace Vn::Posix
