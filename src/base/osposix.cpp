// osposix.cpp (Linux only)
//
// Small helpers of all Linux forms. What they have in common: `errno` tells why a call failed, and nothing here
// changes it between the failure and the return.
#include <base/osposix_p.h>

#include <base/osaccess_p.h>

#include <dlfcn.h>
#include <fcntl.h>
#include <pwd.h>

#include <cstring>
#include <vector>

namespace Vn::Posix
{
namespace
{
/// getpwuid_r() should return 0 with a null entry for an unknown user, but some name services report one of these
/// errors.
bool meansUnknownUser(int error)
{
    return error == ENOENT || error == ESRCH || error == EBADF || error == EPERM;
}

/// The mode of one party as the system's bits, 4 for read and 2 for write.
::mode_t bitsOf(std::int32_t mode)
{
    return (System::hasBit(mode, System::readAccess) ? 4U : 0U) |
           (System::hasBit(mode, System::writeAccess) ? 2U : 0U);
}
}  // namespace

int liftAboveStandard(int file)
{
    if (file == -1 || file > STDERR_FILENO)
        return file;
    const Descriptor low(file);  // closed at the end, after the copy
    return ::fcntl(low.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
}

// A descriptor that a thread opens while another one starts a program would be inherited, so O_CLOEXEC is set in the
// call.
int openFile(char const* path, int flags, ::mode_t mode)
{
    return liftAboveStandard(retry([&] { return ::open(path, flags | O_CLOEXEC, mode); }));
}

::mode_t modeOf(OsFileTypes::Permissions const& permissions)
{
    // Owner, group, others: three bits each, from the highest.
    return bitsOf(permissions.getUserMode()) << 6 | bitsOf(permissions.getGroupMode()) << 3 |
           bitsOf(permissions.getOtherMode());
}

std::optional<std::string> findUserName(::uid_t user)
{
    std::vector<char> buffer(1024);
    ::passwd entry;
    ::passwd* found = nullptr;
    // This call reports its error as the result and leaves `errno` alone. ERANGE asks for a larger buffer.
    for (;;) {
        const int error = ::getpwuid_r(user, &entry, buffer.data(), buffer.size(), &found);
        if (error == ERANGE) {
            buffer.resize(buffer.size() * 2);
        } else if (error != 0 && error != EINTR && !meansUnknownUser(error)) {
            errno = error;
            return std::nullopt;
        } else if (error != EINTR) {
            return found != nullptr ? found->pw_name : std::to_string(user);
        }
    }
}

void* openModule(char const* file, int flags, std::string* reason)
{
    void* const module = ::dlopen(file, flags);
    if (module != nullptr)
        return module;
    char const* const text = ::dlerror();
    // The first reason: the second try would tell of a path that the caller has never seen.
    if (reason != nullptr)
        *reason = text != nullptr ? text : "";
    // A name with a separator is a path, which the system doesn't search for.
    ::Dl_info own;
    if (std::strchr(file, '/') != nullptr || ::dladdr(reinterpret_cast<void*>(&openModule), &own) == 0)
        return nullptr;
    const std::string path = own.dli_fname;
    return ::dlopen((path.substr(0, path.rfind('/') + 1) + file).c_str(), flags);
}

}  // namespace Vn::Posix
