// lgoutputlockwindows.cpp (POSIX form: lgoutputlockposix.cpp)
//
// A mutex that static destruction leaves alone.
#include <base/lgoutputlock_p.h>

#include <mutex>

namespace Vn
{
namespace
{
/// One for the process, made by whichever thread comes first. Without `fork` there is nothing to reset.
std::recursive_mutex& getMutex()
{
    // Never destroyed: a reader may be at work while static objects are.
    static std::recursive_mutex& mutex = *new std::recursive_mutex;
    return mutex;
}
}  // namespace

/// Blocks while another thread writes a line or changes outputs.
LgOutputLock::LgOutputLock()
{
    getMutex().lock();
}

LgOutputLock::~LgOutputLock()
{
    getMutex().unlock();
}

}  // namespace Vn
