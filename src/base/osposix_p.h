// Private to the library.
#pragma once

// For the Linux forms only: no portable source includes this.
#include <base/osfiletypes.h>

#include <sys/types.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <string>

namespace Vn::Posix
{

/// Calls `call` until it is not interrupted by a signal: until its result is not -1, or `errno` is not EINTR.
///
///     retry([&] { return ::read(file, bytes, size); });
///
/// Not for close(), which gives the descriptor up even when it reports EINTR.
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

/// Owner of a descriptor, -1 for none. Closing keeps `errno`, so that the error of an earlier call can still be
/// thrown. A failure to close is ignored.
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

    /// Closes what is held, then takes `number`.
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

/// Keeps our files off descriptors 0 to 2. If the program has closed one of these, the system would give its number
/// to our file, and what the program writes to standard output would go there.
///
///     -1 or 3 and above  ->  as it is
///     0, 1 or 2          ->  closed, and a copy above 2 in its place; -1 if the system has none left
///
int liftAboveStandard(int file);

/// open(), repeated if interrupted; the descriptor is above the standard ones and is closed in programs that are
/// started (O_CLOEXEC). -1, with `errno` set, if that fails.
int openFile(char const* path, int flags, ::mode_t mode = 0);

/// The mode bits of a new file: Permissions(3, 1, 0) gives 0640. Never executable.
::mode_t modeOf(OsFileTypes::Permissions const& permissions);

/// Name of the user, or the number in decimal where it has none. Nothing, with `errno` set, if the system can't tell.
std::optional<std::string> findUserName(::uid_t user);

/// dlopen(), and for a name without a directory a second try in this library's own directory. The system looks there
/// by itself for a call from this library ($ORIGIN); but a sanitizer replaces dlopen(), and the system then takes the
/// sanitizer for the caller. Null if neither try succeeds, with the reason of the first one in `reason` unless that
/// is null.
void* openModule(char const* file, int flags, std::string* reason);

}  // namespace Vn::Posix
