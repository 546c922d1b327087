#pragma once

#include <base/baseexport.h>

#include <iosfwd>

namespace Vn
{

class ProfilerBase;

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"  // a value: nobody deletes one through a base

/// One summary of many profilers, as after work in several threads that each had a profiler of its own.
///
///     Vn::ProfConsolidator all;
///     for (Worker& worker : workers)
///         all.consolidate(worker.profiler);
///     std::cout << all;
///
/// It takes the profilers' results. One that has no cycles counts with its minimum of 0.0, and the summary's minimum
/// is 0.0 from then on. There is no deviation. One thread at a time.
/// Tests: tests/base/profconsolidatortest.cpp.
class VN_BASE_EXPORT ProfConsolidator
{
public:
    ProfConsolidator();

    virtual void consolidate(ProfilerBase& profiler);

    int cycles() const;

    // Seconds; 0.0 while there are no cycles.
    double totalTime() const;
    double averageTime() const;
    double minTime() const;
    double maxTime() const;

private:
    int _cycles;
    double _totalTime;
    double _minTime;  ///< the largest finite number at first
    double _maxTime;
};

#pragma GCC diagnostic pop

/// As the text of a profiler, with the heading "Profiler Consolidator:" and without the deviation.
VN_BASE_EXPORT std::ostream& operator<<(std::ostream& stream, ProfConsolidator const& consolidator);

}  // namespace Vn
