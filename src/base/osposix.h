#pragma once

// For the Linux forms only: no portable source includes this.
#include <base/osfiletypes.h>

#include <sys/types.h>

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

/// The bits of a new file's mode.
::mode_t modeOf(OsFileTypes::Permissions const& permissions);

/// Name of the user, or the number in decimal where it has none. False, with `errno` set, if the system can't tell.
bool findUserName(::uid_t user, std::string& name);

}  // namespace Vn::Posix
