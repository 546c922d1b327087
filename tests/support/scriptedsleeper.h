#pragma once

#include <base/sleeper.h>

namespace VnTest
{

/// In the place of the library's sleeper, in a process that doesn't start the library: a clock that the test moves.
///
///     VnTest::ScriptedSleeper::install();
///     VnTest::ScriptedSleeper::now += 1.2;
class ScriptedSleeper : public Vn::Sleeper
{
public:
    double getCurrentTime() const override { return now; }
    double getResolution() const override { return 1.0; }
    bool sleep(double seconds) override
    {
        now += seconds;
        return true;
    }

    static void install() { Vn::InSingleton<Vn::Sleeper>::initialize(new ScriptedSleeper); }
    static void remove() { Vn::InSingleton<Vn::Sleeper>::finalize(); }

    static inline double now = 0.0;
};

}  // namespace VnTest
