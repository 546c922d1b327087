// The base of both interval timers. Its destructor is defined here and not in the class, so the table of virtual functions
// stands in the library once for all modules.
#include <base/intervaltimer.h>

namespace Vn
{

// The name is not copied: a timer in an inner loop should not allocate, and names are literals.
IntervalTimer::IntervalTimer(char const* name) : _name(name) {}

IntervalTimer::~IntervalTimer() = default;

}  // namespace Vn
