// osutilswindows.cpp (Linux form: osutilsposix.cpp)
#include <base/osutils.h>

#include <base/exsyserror.h>

#include <process.h>
#include <windows.h>

namespace Vn
{
namespace
{
constexpr char sourceName[] = "src/base/osutilswindows";
constexpr DWORD hostNameSize = 16;
constexpr DWORD userNameSize = 257;
}  // namespace

ArrayPtrRet<char> OsUtils::getHostName()
{
    ArrayPtrRet<char> name(new char[hostNameSize]);
    DWORD size = hostNameSize;
    if (!::GetComputerNameA(name.get(), &size))
        throw ExSysErrorANSI(sourceName, __LINE__);
    return name;
}

ArrayPtrRet<char> OsUtils::getUserName(bool)
{
    ArrayPtrRet<char> name(new char[userNameSize]);
    DWORD size = userNameSize;
    if (!::GetUserNameA(name.get(), &size))
        throw ExSysErrorANSI(sourceName, __LINE__);
    return name;
}

std::uint32_t OsUtils::getPid()
{
    return static_cast<std::uint32_t>(::_getpid());
}

void OsUtils::sleep(unsigned int seconds)
{
    ::Sleep(seconds * 1000U);  // wraps, as the call takes 32 bits
}

}  // namespace Vn
