#pragma once

#include <base/baseexport.h>

namespace Vn
{

/// One interval between a start and a stop: two points in time, kept as they were taken.
///
/// Nothing is checked. Each start() and stop() overwrites its own point, in any order and any number of times, and
/// timeInterval() subtracts what stands there. One thread at a time; any number of timers side by side.
/// Tests: tests/base/intervaltimertest.cpp.
class VN_BASE_EXPORT IntervalTimer
{
public:
    IntervalTimer(IntervalTimer const&) = default;
    IntervalTimer& operator=(IntervalTimer const&) = default;
    virtual ~IntervalTimer();

    virtual void start() = 0;
    virtual void stop() = 0;

    /// Seconds from the last start() to the last stop(), so negative after a start() that no stop() has followed.
    virtual double timeInterval() const = 0;

    /// Seconds from the last start() to now; since the clock's own origin if there was none. Changes nothing.
    virtual double sinceStart() const = 0;

    char const* getName() const { return _name; }

    /// The text is not copied and must outlive the timer and its copies.
    void setName(char const* name) { _name = name; }

protected:
    /// The same holds for this name.
    explicit IntervalTimer(char const* name);

private:
    char const* _name;
};

}  // namespace Vn
