#pragma once

#include <base/arrayptr.h>
#include <base/baseexport.h>

#include <cstdint>

namespace Vn
{

/// Facts about the process and its machine. Static only, any thread.
/// Tests: tests/base/osutilstest.cpp.
class VN_BASE_EXPORT OsUtils
{
public:
    OsUtils() = delete;

    /// The machine's name, cut to the system's limit. Throws ExSysErrorANSI.
    static ArrayPtrRet<char> getHostName();

    /// The name of the user whose rights count; on Linux the number in decimal where it has no name. The flag is not
    /// looked at. Throws ExSysErrorANSI.
    static ArrayPtrRet<char> getUserName(bool);

    static std::uint32_t getPid();

    /// Blocks for whole seconds, whatever signals arrive. On Windows the milliseconds wrap at 32 bits.
    static void sleep(unsigned int seconds);
};

}  // namespace Vn
