// sleeperlinux.cpp (Windows form: sleeperwindows.cpp)
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

/// While it lives the kernel wakes this thread as soon as a timer is due, and not up to 50 microseconds later, when it
/// could wake others as well.
class Punctuality
{
public:
    Punctuality() : _slack(::prctl(PR_GET_TIMERSLACK)) { ::prctl(PR_SET_TIMERSLACK, 1UL); }
    ~Punctuality()
    {
        // 0 would mean the thread's default.
        if (_slack > 0)
            ::prctl(PR_SET_TIMERSLACK, static_cast<unsigned long>(_slack));
    }
    Punctuality(Punctuality const&) = delete;
    Punctuality& operator=(Punctuality const&) = delete;

private:
    int _slack;  ///< nanoseconds; 0 for a real-time thread, which has none
};

/// Sleeps on the kernel's timers. A thread needs no record of its own here.
class SleeperLinux : public Sleeper
{
public:
    SleeperLinux()
    {
        std::uint64_t frequency = 0;
        if (!System::readCounterFrequency(frequency))
            throw ExSysErrorANSI(sourceName, __LINE__);
        _secondsPerCount = 1.0 / static_cast<double>(frequency);
    }

    double getCurrentTime() const override
    {
        std::uint64_t count = 0;
        System::readCounter(count);
        return static_cast<double>(count) * _secondsPerCount;
    }

    double getResolution() const override { return 0.001; }

    bool sleep(double seconds) override
    {
        const std::uint32_t milliseconds = SleeperMath::sleepMilliseconds(seconds);
        if (milliseconds == 0)
            return false;
        const Punctuality punctuality;
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
