// osutilsposix.cpp (Windows form: osutilswindows.cpp)
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
constexpr std::size_t userNameSize = 257;
}  // namespace

ArrayPtrRet<char> OsUtils::getHostName()
{
    ArrayPtrRet<char> name(new char[hostNameSize]);
    if (::gethostname(name.get(), hostNameSize) != 0)
        throw ExSysErrorANSI(sourceName, __LINE__);
    name[hostNameSize - 1] = '\0';  // a name that doesn't fit comes without
    return name;
}

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

void OsUtils::sleep(unsigned int seconds)
{
    ::timespec due = Posix::now();
    due.tv_sec += static_cast<::time_t>(seconds);
    Posix::sleepUntil(due);
}

}  // namespace Vn
