// What timers have in common whatever clock they use. Their arithmetic is in timer.imp, for each clock separately, so that
// starting and stopping costs no virtual call.
#include <base/timer.h>

#include <base/exreasontext_p.h>

#include <ostream>

namespace Vn
{

TimerBase::~TimerBase() = default;

std::ostream& operator<<(std::ostream& stream, TimerBase const& timer)
{
    const double total = timer.totalTime();  // first, because writing takes time itself
    return stream << "Timer " << ExReasonText::orEmpty(timer.getName()) << ": Total = " << total;
}

// The two instances that the library holds.
template class Timer<HwIntervalTimer>;
template class Timer<TodIntervalTimer>;

}  // namespace Vn
