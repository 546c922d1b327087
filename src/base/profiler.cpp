#include <base/profiler.h>

#include <base/exreasontext.h>
#include <base/profrows.h>

namespace Vn
{

ProfilerBase::~ProfilerBase() = default;

std::ostream& operator<<(std::ostream& stream, ProfilerBase const& profiler)
{
    ProfRows rows(stream);
    stream << "Profiler " << ExReasonText::orEmpty(profiler.getName()) << ":" << std::endl;
    rows.writeSums(profiler);
    rows.write("Standard dev:", profiler.standardDeviation());
    return stream << std::endl;
}

template class Profiler<HwIntervalTimer>;
template class Profiler<TodIntervalTimer>;

}  // namespace Vn
