// Sums of several profilers, such as one for each thread. Sums of squares are not added up, so there is no standard
// deviation. The profilers are read and not changed, but consolidate() doesn't lock them: their threads must have
// stopped, or the caller must keep them apart.
#include <base/profconsolidator.h>

#include <base/profiler.h>
#include <base/profrows_p.h>

#include <algorithm>
#include <limits>

namespace Vn
{

ProfConsolidator::ProfConsolidator()
    : _cycles(0), _totalTime(0.0), _minTime(std::numeric_limits<double>::max()), _maxTime(0.0)
{}

void ProfConsolidator::consolidate(ProfilerBase& profiler)
{
    // Intended: the profiler's public results and not its fields are read, so a profiler without cycles makes the
    // minimum 0.0; do not mend.
    _cycles += profiler.cycles();
    _totalTime += profiler.totalTime();
    _minTime = std::min(profiler.minTime(), _minTime);
    _maxTime = std::max(profiler.maxTime(), _maxTime);
}

int ProfConsolidator::cycles() const
{
    return _cycles;
}

double ProfConsolidator::totalTime() const
{
    return _totalTime;
}

double ProfConsolidator::averageTime() const
{
    return _cycles == 0 ? 0.0 : _totalTime / _cycles;
}

double ProfConsolidator::minTime() const
{
    return _cycles == 0 ? 0.0 : _minTime;  // hides the initial value, the largest number
}

double ProfConsolidator::maxTime() const
{
    return _maxTime;
}

std::ostream& operator<<(std::ostream& stream, ProfConsolidator const& consolidator)
{
    ProfRows rows(stream);  // sets the format, and restores the stream's own at the end
    stream << "Profiler Consolidator:" << std::endl;
    rows.writeSums(consolidator);
    return stream << std::endl;
}

}  // namespace Vn
