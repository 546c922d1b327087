#pragma once

#include <base/arrayptr.h>
#include <base/baseexport.h>

#include <cstdint>

namespace Vn
{

/// Facts about the process and its machine, and a sleep of whole seconds.
///
///     Vn::ArrayPtr<char> host = Vn::OsUtils::getHostName();
///     std::cout << host.get() << ' ' << Vn::OsUtils::getPid() << '\n';
///
/// Static and stateless: any thread. The caller owns the texts.
/// Tests: tests/base/osutilstest.cpp.
class VN_BASE_EXPORT OsUtils
{
public:
    OsUtils() = delete;

    /// The machine's network name. A longer name than the system's limit is cut: 64 characters on Linux, 15 on
    /// Windows, where it is the computer's short name. Throws ExSysErrorANSI if the system gives none.
    static ArrayPtrRet<char> getHostName();

    /// The name of the user whose rights the process has, up to 256 characters.
    ///
    ///     started by anna                    ->  "anna"
    ///     started by anna with root's rights ->  "root"
    ///     user 4711 has no name, on Linux    ->  "4711"
    ///
    /// The flag is ignored. Throws ExSysErrorANSI if the system cannot tell.
    static ArrayPtrRet<char> getUserName(bool);

    /// The process's number; another process may get it once this one has ended.
    static std::uint32_t getPid();

    /// Blocks the calling thread for at least that long, whatever signals arrive; 0 returns at once. Windows counts
    /// the milliseconds in 32 bits, which wrap: 4,294,968 seconds last 0.7 seconds there. Sleeper has finer waits.
    static void sleep(unsigned int seconds);
};

}  // namespace Vn
