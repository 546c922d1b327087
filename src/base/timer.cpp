#include <base/timer.h>

#include <base/exreasontext_p.h>

#include <ostream>

namespace Vn
{

TimerBase::~TimerBase() = default;

std::ostream& operator<<(std::ostream& stream, TimerBase const& timer)
{
    const double total = timer.totalTime();  // before the writing, which takes time itself
    return stream << "Timer " << ExReasonText::orEmpty(timer.getName()) << ": Total = " << total;
}

template class Timer<HwIntervalTimer>;
template class Timer<TodIntervalTimer>;

}  // namespace Vn
