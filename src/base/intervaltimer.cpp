#include <base/intervaltimer.h>

namespace Vn
{

IntervalTimer::IntervalTimer(char const* name) : _name(name) {}

IntervalTimer::~IntervalTimer() = default;

}  // namespace Vn
