#pragma once

#include <base/intervaltimer.h>

namespace VnTest
{

/// An interval timer by a clock that the test sets, in seconds.
class ScriptedTimer : public Vn::IntervalTimer
{
public:
    explicit ScriptedTimer(char const* name) : IntervalTimer(name) {}

    void start() override { _start = now; }
    void stop() override { _stop = now; }
    double timeInterval() const override { return _stop - _start; }
    double sinceStart() const override { return now - _start; }

    static inline double now = 0.0;

private:
    double _start = 0.0;
    double _stop = 0.0;
};

}  // namespace VnTest
