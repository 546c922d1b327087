#pragma once

#include <base/baseexport.h>

#include <iosfwd>

namespace Vn
{

class ProfilerBase;

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"  // a value, never deleted through a pointer to a base

/// One summary of many profilers, for example of threads that each had a profiler of its own.
///
///     Vn::ProfConsolidator all;
///     for (Worker& worker : workers)
///         all.consolidate(worker.profiler);
///     std::cout << all;
///
/// Only the profilers' public results are read. So there is no standard deviation, and a profiler without cycles,
/// whose minTime() is 0.0, makes the summary's minimum 0.0 for good.
///
/// A value without allocation. One thread at a time, and no thread may be using a profiler while it is consolidated.
/// Tests: tests/base/profconsolidatortest.cpp.
class VN_BASE_EXPORT ProfConsolidator
{
public:
    /// A summary without cycles.
    ProfConsolidator();

    /// Adds the closed cycles of `profiler`; time in its open cycle is not part of them. Consolidating a profiler
    /// twice counts its cycles twice. The profiler does not change.
    ///
    ///     minimum so far   profiler             minimum afterwards
    ///     (no cycles)      minimum 2            2
    ///     2                minimum 1            1
    ///     2                without cycles       0
    ///
    virtual void consolidate(ProfilerBase& profiler);

    /// Number of cycles in all profilers together. At most 2147483647 can be counted; there is no check.
    int cycles() const;

    /// @{
    /// Sum, mean, least and greatest time of all cycles, in seconds; 0.0 while there are none.
    double totalTime() const;
    double averageTime() const;
    double minTime() const;
    double maxTime() const;
    /// @}

private:
    int _cycles;
    double _totalTime;  ///< seconds, and likewise below
    double _minTime;    ///< the largest finite number at first
    double _maxTime;
};

#pragma GCC diagnostic pop

/// Writes the summary like a profiler, under another heading and without the deviation:
///
///     Profiler Consolidator:
///             Nb of cycles:   2
///             Total time:     4.000000
///             Average time:   2.000000
///             Minimum time:   1.000000
///             Maximum time:   3.000000
///
/// An empty line follows. The stream's flags, precision and fill character are as before afterwards.
VN_BASE_EXPORT std::ostream& operator<<(std::ostream& stream, ProfConsolidator const& consolidator);

}  // namespace Vn
