// Private to lglog.cpp and lgreader.cpp; implemented in lgoutputlockposix.cpp and lgoutputlockwindows.cpp.
#pragma once

namespace Vn
{

/// Keeps the outputs as they are while it exists: a reader holds one while it writes a line, the logger while it
/// opens or closes outputs. So a stop waits for the line that another thread is writing, and a line after the stop
/// finds no output. Recursive: a thread that holds one may make another. In a child of `fork` none is held.
///
/// Made before the inter-process lock is taken, never while that is held: the reverse order in another thread would
/// deadlock.
class LgOutputLock
{
public:
    LgOutputLock();
    ~LgOutputLock();

    LgOutputLock(LgOutputLock const&) = delete;
    LgOutputLock& operator=(LgOutputLock const&) = delete;
};

}  // namespace Vn
