// osutilswindows.cpp (Linux form: osutilsposix.cpp)
//
// Each function is one call into an array of the system's largest size for such a name, its terminator included: so a
// name is never cut, and the caller gets the array itself. The failures are thrown as the C library's,
// ExSysErrorANSI.
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
    DWORD size = hostNameSize;  // in: with the terminator; out: without it
    if (!::GetComputerNameA(name.get(), &size))
        throw ExSysErrorANSI(sourceName, __LINE__);
    return name;
}

// Intended: the flag is not looked at. Do not mend: no meaning of it can be told from its callers.
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
    // Intended: the product wraps at 32 bits, which is all that the call takes. Do not mend: the interface counts in
    // these 32 bits. The longest sleep that fits is 49 days.
    ::Sleep(seconds * 1000U);
}

}  // namespace Vn
