// Private to periodictimerwindows.cpp and sleeperwindows.cpp.
#pragma once

// For the Windows forms only: no portable source includes this.
#include <windows.h>

#include <mmsystem.h>

#include <cstring>

namespace Vn::Multimedia
{

/// The periods that the timers take, in milliseconds.
inline ::TIMECAPS getCapabilities()
{
    ::TIMECAPS capabilities = {1, 1};
    ::timeGetDevCaps(&capabilities, sizeof capabilities);
    return capabilities;
}

/// The smallest period, in seconds.
inline double getResolution()
{
    return getCapabilities().wPeriodMin * 0.001;
}

/// Sets `event` after `delayMs`, once or periodically. The identifier for timeKillEvent(), 0 if the system refuses.
inline ::MMRESULT setEventLater(::HANDLE event, ::UINT delayMs, ::UINT kind)
{
    void* const target = event;
    ::LPTIMECALLBACK callback;
    static_assert(sizeof callback == sizeof target);
    std::memcpy(&callback, &target, sizeof callback);
    return ::timeSetEvent(delayMs, 1, callback, 0, kind | TIME_CALLBACK_EVENT_SET);
}

}  // namespace Vn::Multimedia
