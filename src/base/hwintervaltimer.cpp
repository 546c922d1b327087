// start(), stop() and timeInterval() are in the header: reading the counter takes a few nanoseconds, and a call would add
// to what is measured.
#include <base/hwintervaltimer.h>

namespace Vn
{

HwIntervalTimer::HwIntervalTimer(char const* name) : IntervalTimer(name), _start(0), _stop(0)
{
    // start(), stop() and the results use HwCounter without a test for null; this makes that legal.
    HwCounter::init();
}

HwIntervalTimer::~HwIntervalTimer() = default;

double HwIntervalTimer::sinceStart() const
{
    return HwCounter::secondsInline(_start, HwCounter::timeStampInline());
}

}  // namespace Vn
