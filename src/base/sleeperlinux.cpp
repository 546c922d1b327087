// sleeperlinux.cpp (Windows form: sleeperwindows.cpp)
//
// A sleep computes when it is due on the monotonic clock and waits for that moment (clock_nanosleep with
// TIMER_ABSTIME), so signals in between do not make it longer. By default the kernel may delay a wake-up by up to 50
// microseconds, to join it with others; the calling thread's timer slack is set to its minimum for the time of the
// sleep.
//
// Unlike on Windows a thread needs no record of its own, so any thread may sleep on a reference that was handed over.
#include <base/sleeper.h>

#include <base/exsyserror.h>
#include <base/oscpuinfo_p.h>
#include <base/osposix_p.h>
#include <base/sleepermath_p.h>

#include <sys/prctl.h>

namespace Vn
{
namespace
{
constexpr char sourceName[] = "src/base/sleeperwindows";

/// Sets the calling thread's timer slack to its minimum, and restores it at the end.
class MinimalTimerSlack
{
public:
    MinimalTimerSlack() : _slack(::prctl(PR_GET_TIMERSLACK)) { ::prctl(PR_SET_TIMERSLACK, 1UL); }
    ~MinimalTimerSlack()
    {
        // Setting 0 would restore the default instead, which the program may have changed.
        if (_slack > 0)
            ::prctl(PR_SET_TIMERSLACK, static_cast<unsigned long>(_slack));
    }
    MinimalTimerSlack(MinimalTimerSlack const&) = delete;
    MinimalTimerSlack& operator=(MinimalTimerSlack const&) = delete;

private:
    int _slack;  ///< nanoseconds; 0 for a real-time thread, which has none
};

/// The form over the kernel's clocks.
class SleeperLinux : public Sleeper
{
public:
    SleeperLinux()
    {
        const std::optional<std::uint64_t> frequency = System::readCounterFrequency();
        if (!frequency)
            throw ExSysErrorANSI(sourceName, __LINE__);
        _secondsPerCount = 1.0 / static_cast<double>(*frequency);
    }

    double getCurrentTime() const override
    {
        // With a frequency, as the constructor has found it, the counter doesn't fail.
        return static_cast<double>(System::readCounter().value_or(0)) * _secondsPerCount;
    }

    double getResolution() const override { return 0.001; }

    bool sleep(double seconds) override
    {
        const std::uint32_t milliseconds = SleeperMath::sleepMilliseconds(seconds);
        // Intended: a sleep below a millisecond does not happen at all. Do not mend: callers see it by the result.
        if (milliseconds == 0)
            return false;
        const MinimalTimerSlack slack;
        ::timespec due = Posix::now();
        SleeperMath::moveOn(due, milliseconds);
        Posix::sleepUntil(due);
        return true;
    }

private:
    double _secondsPerCount;
};
}  // namespace

Sleeper& Sleeper::getInstance()
{
    return InSingleton<Sleeper>::getInstance();
}

Sleeper* Sleeper::create()
{
    return new SleeperLinux;
}

}  // namespace Vn
