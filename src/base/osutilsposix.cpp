// osutilsposix.cpp (Windows form: osutilswindows.cpp)
//
// The names come in arrays of the system's largest size, as on Windows, so that a caller may write into one up to
// that size. The failures are thrown as the C library's, ExSysErrorANSI.
#include <base/osutils.h>

#include <base/exsyserror.h>
#include <base/osposix_p.h>

#include <limits.h>
#include <unistd.h>

#include <algorithm>
#include <string>

namespace Vn
{
namespace
{
constexpr char sourceName[] = "src/base/osutilswindows";
constexpr std::size_t hostNameSize = HOST_NAME_MAX + 1;
constexpr std::size_t userNameSize = 257;  ///< as on Windows; a longer name is cut
}  // namespace

ArrayPtrRet<char> OsUtils::getHostName()
{
    ArrayPtrRet<char> name(new char[hostNameSize]);
    if (::gethostname(name.get(), hostNameSize) != 0)
        throw ExSysErrorANSI(sourceName, __LINE__);
    name[hostNameSize - 1] = '\0';  // the system does not terminate a name that it cuts
    return name;
}

// Intended: the flag is ignored. Do not mend: both values have always been treated alike. The effective user, who has
// the rights; a user without an entry has a number for a name.
ArrayPtrRet<char> OsUtils::getUserName(bool)
{
    const std::optional<std::string> found = Posix::findUserName(::geteuid());
    if (!found)
        throw ExSysErrorANSI(sourceName, __LINE__);
    ArrayPtrRet<char> name(new char[userNameSize]);
    const std::size_t length = std::min(found->size(), userNameSize - 1);
    found->copy(name.get(), length);
    name[static_cast<std::ptrdiff_t>(length)] = '\0';
    return name;
}

std::uint32_t OsUtils::getPid()
{
    return static_cast<std::uint32_t>(::getpid());
}

// Up to a moment on the monotonic clock, so that signals do not make it shorter or longer.
void OsUtils::sleep(unsigned int seconds)
{
    ::timespec due = Posix::now();
    due.tv_sec += static_cast<::time_t>(seconds);
    Posix::sleepUntil(due);
}

}  // namespace Vn
