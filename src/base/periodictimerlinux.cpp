// periodictimerlinux.cpp (Windows form: periodictimerwindows.cpp)
#include <base/periodictimer.h>

#include <base/exsyserror.h>
#include <base/osposix_p.h>
#include <base/sleeper.h>
#include <base/sleepermath_p.h>

#include <poll.h>
#include <pthread.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <cstdint>
#include <mutex>

namespace Vn
{
namespace
{
constexpr char sourceName[] = "src/base/periodictimerlinux";

int openTimer()
{
    return ::timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC);
}

/// Beats on a timer of the kernel, which is its descriptor.
class PeriodicTimerLinux : public PeriodicTimer
{
public:
    explicit PeriodicTimerLinux(double interval);
    ~PeriodicTimerLinux() override;

    bool start() override;
    bool stop() override;
    unsigned long wait() override;

private:
    friend class LiveTimers;

    /// Lets the timer tick every so many milliseconds, the first time after as many; 0 silences it. Throws
    /// ExSysErrorWindows.
    void arm(std::uint64_t periodMs);
    /// Throws ExSysErrorWindows.
    void forgetTicks();

    /// In a child of fork: the parent's timer is the parent's.
    void leaveToParent();

    int _timer;                     ///< -1 in a child of fork that had no descriptor left: each use is refused
    PeriodicTimerLinux* _previous;  ///< in LiveTimers
    PeriodicTimerLinux* _next;
};

/// All timers of the process, so that a child of fork can be given its own.
class LiveTimers
{
public:
    static void add(PeriodicTimerLinux& timer)
    {
        static const int failure = ::pthread_atfork(lock, unlock, unlockChild);
        (void)failure;  // for want of memory: then a child sees its parent's timers
        const std::lock_guard guard(_lock);
        timer._next = _first;
        if (_first != nullptr)
            _first->_previous = &timer;
        _first = &timer;
    }

    static void remove(PeriodicTimerLinux& timer)
    {
        const std::lock_guard guard(_lock);
        (timer._previous != nullptr ? timer._previous->_next : _first) = timer._next;
        if (timer._next != nullptr)
            timer._next->_previous = timer._previous;
    }

private:
    static void lock() { _lock.lock(); }
    static void unlock() { _lock.unlock(); }

    static void unlockChild()
    {
        for (PeriodicTimerLinux* timer = _first; timer != nullptr; timer = timer->_next)
            timer->leaveToParent();
        _lock.unlock();
    }

    static inline constinit std::mutex _lock;  ///< guards the chain
    static inline PeriodicTimerLinux* _first = nullptr;
};

PeriodicTimerLinux::PeriodicTimerLinux(double interval)
    : PeriodicTimer(interval), _timer(openTimer()), _previous(nullptr), _next(nullptr)
{
    if (_timer == -1)
        throw ExSysErrorWindows(sourceName, __LINE__);
    LiveTimers::add(*this);
}

PeriodicTimerLinux::~PeriodicTimerLinux()
{
    LiveTimers::remove(*this);
    ::close(_timer);
}

bool PeriodicTimerLinux::start()
{
    if (isRunning())
        return false;
    Sleeper& clock = Sleeper::getInstance();  // throws, if it does, before anything has begun
    arm(SleeperMath::wholeMilliseconds(getInterval()));
    beginCount(clock.getCurrentTime());
    return true;
}

bool PeriodicTimerLinux::stop()
{
    if (!isRunning())
        return false;
    endCount();
    arm(0);
    return true;
}

unsigned long PeriodicTimerLinux::wait()
{
    forgetTicks();
    ::pollfd tick = {_timer, POLLIN, 0};
    if (Posix::retry([&] { return ::poll(&tick, 1, -1); }) == -1)
        throw ExSysErrorWindows(sourceName, __LINE__);
    if ((tick.revents & POLLIN) == 0) {
        errno = EBADF;  // somebody else closes it; without this look the caller would spin
        throw ExSysErrorWindows(sourceName, __LINE__);
    }
    return getCurrentCount();
}

void PeriodicTimerLinux::arm(std::uint64_t periodMs)
{
    ::timespec period = {};
    period.tv_sec = static_cast<::time_t>(periodMs / 1000);
    period.tv_nsec = static_cast<long>(periodMs % 1000) * 1000000;
    const ::itimerspec beat = {period, period};
    if (::timerfd_settime(_timer, 0, &beat, nullptr) != 0)
        throw ExSysErrorWindows(sourceName, __LINE__);
}

void PeriodicTimerLinux::forgetTicks()
{
    std::uint64_t ticks;
    if (Posix::retry([&] { return ::read(_timer, &ticks, sizeof ticks); }) == -1 && errno != EAGAIN)
        throw ExSysErrorWindows(sourceName, __LINE__);
}

void PeriodicTimerLinux::leaveToParent()
{
    endCount();
    ::close(_timer);
    _timer = openTimer();
}
}  // namespace

ObjPtrRet<PeriodicTimer> PeriodicTimer::create(double interval)
{
    return ObjPtrRet<PeriodicTimer>(new PeriodicTimerLinux(interval));
}

double PeriodicTimer::getResolution()
{
    return 0.001;
}

}  // namespace Vn
