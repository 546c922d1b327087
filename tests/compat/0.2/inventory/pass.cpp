#include "pass.h"

#include <iomanip>
#include <ostream>
#include <string>

namespace Inventory
{
namespace
{
void printRow(std::ostream& stream, Vn::ProfilerBase const& profiler, char const* clock)
{
    stream << "  " << std::left << std::setw(10) << profiler.getName() << std::setw(14) << clock << std::right
           << std::setw(8) << profiler.cycles() << std::fixed << std::setprecision(6);
    for (const double seconds : {profiler.totalTime(), profiler.averageTime(), profiler.maxTime()})
        stream << std::setw(12) << seconds;
    stream << std::defaultfloat << std::setprecision(6) << "\n";
}
}  // namespace

void Pass::start()
{
    _counter.start();
    _timeOfDay.start();
}

void Pass::stop()
{
    _timeOfDay.stop();
    _counter.stop();
    _counter.endCycle();
    _timeOfDay.endCycle();
}

void Pass::print(std::ostream& stream) const
{
    printRow(stream, _counter, "counter");
    printRow(stream, _timeOfDay, "time of day");
}

}  // namespace Inventory
