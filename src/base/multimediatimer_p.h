// Private to periodictimerwindows.cpp and sleeperwindows.cpp.
#pragma once

// For the Windows forms only: no portable source includes this.
#include <windows.h>

#include <mmsystem.h>

#include <cstring>

namespace Vn::Multimedia
{

/// The periods that the timers accept, in milliseconds; 1 to 1 if the system does not tell them.
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

/// Makes the system's timer thread set `event` after `delayMs` milliseconds, once (TIME_ONESHOT) or again and again
/// (TIME_PERIODIC). Returns the identifier for timeKillEvent(), or 0 if the system refuses, as it does for a delay of
/// 0 and for one beyond wPeriodMax. The resolution of 1 asks for ticks that are as precise as the delay.
inline ::MMRESULT setEventLater(::HANDLE event, ::UINT delayMs, ::UINT kind)
{
    void* const target = event;
    // The parameter is a callback function by its type, and an event by the flag TIME_CALLBACK_EVENT_SET.
    ::LPTIMECALLBACK callback;
    static_assert(sizeof callback == sizeof target);
    std::memcpy(&callback, &target, sizeof callback);
    return ::timeSetEvent(delayMs, 1, callback, 0, kind | TIME_CALLBACK_EVENT_SET);
}

}  // namespace Vn::Multimedia
