#pragma once

#include <base/profiler.h>

#include <base/hwintervaltimer.h>
#include <base/todintervaltimer.h>

#include <iosfwd>

namespace Inventory
{

/// How long a part of the work took, round by round, by the counter and by the time of day.
class Pass
{
public:
    /// `name` stays with the caller.
    explicit Pass(char const* name) : _counter(name), _timeOfDay(name) {}

    void start();

    /// Ends a round.
    void stop();

    void print(std::ostream& stream) const;

private:
    Vn::Profiler<Vn::HwIntervalTimer> _counter;
    Vn::Profiler<Vn::TodIntervalTimer> _timeOfDay;
};

}  // namespace Inventory
