// periodictimerlinux.cpp (Windows form: periodictimerwindows.cpp)
//
// The beat is a timer of the kernel (timerfd), on the monotonic clock:
//
//     start()    arms it with the interval in whole milliseconds, then starts the count
//     wait()     reads the ticks that have come so far, to forget them, then polls for the next one
//     stop()     ends the count, then disarms it; a waiter stays in its poll until the next start
//
// The descriptor never blocks on reading, so forgetting ticks that have not come costs no wait. The tick itself is
// not read by the waiter: it stays readable, so several waiters are woken by one tick. The ticks only wake; the count
// is computed from the clock in periodictimer.cpp, and a missed tick does not disturb it.
//
// Fork. A child process inherits the descriptor, but the kernel's timer behind it is shared: reading in the child
// would take ticks from the parent, and stopping would stop the parent's. So all timers are in a list (LiveTimers),
// and in the child of a fork each gets a new, stopped timer of the kernel. The list's lock is held across the fork,
// so that the child finds the list whole.
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

/// A disarmed timer; -1 if the process has no descriptors left.
int openTimer()
{
    return Posix::liftAboveStandard(::timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC));
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

    /// Lets the timer tick every so many milliseconds, first after one period; 0 disarms it. Throws
    /// ExSysErrorWindows.
    void arm(std::uint64_t periodMs);

    /// Takes the ticks that have come, so that only a later one ends a wait. Throws ExSysErrorWindows.
    void forgetTicks();

    /// In the child of a fork: closes the parent's timer and opens an own one, which is stopped.
    void replaceTimer();

    int _timer;  ///< -1 in the child of a fork without a free descriptor; each use is then refused
    PeriodicTimerLinux* _previous;  ///< in LiveTimers
    PeriodicTimerLinux* _next;
};

/// A doubly linked list of all timers of the process, for the handlers of fork().
class LiveTimers
{
public:
    static void add(PeriodicTimerLinux& timer)
    {
        static const int failure = ::pthread_atfork(lock, unlock, unlockChild);
        (void)failure;  // only without memory: children of a fork then share the timers of their parent
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
            timer->replaceTimer();
        _lock.unlock();
    }

    static inline constinit std::mutex _lock;  ///< guards the list
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
    Sleeper& clock = Sleeper::getInstance();  // first, because it may throw; then nothing is to be undone
    arm(SleeperMath::wholeMilliseconds(getInterval()));
    // The clock is read after arming, so a tick comes slightly before its interval is full; the count rounds to the
    // nearest whole number, which absorbs that.
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

// Intended: the wait has no time-out. On a stopped timer, or with an interval below a millisecond, it ends with the
// first tick after a later start; do not mend.
unsigned long PeriodicTimerLinux::wait()
{
    forgetTicks();
    ::pollfd tick = {_timer, POLLIN, 0};
    if (Posix::retry([&] { return ::poll(&tick, 1, -1); }) == -1)
        throw ExSysErrorWindows(sourceName, __LINE__);
    if ((tick.revents & POLLIN) == 0) {
        errno = EBADF;  // the program has closed our descriptor; without this test the caller would spin
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

// EAGAIN is the usual case: no tick has come since the last reading.
void PeriodicTimerLinux::forgetTicks()
{
    std::uint64_t ticks;
    if (Posix::retry([&] { return ::read(_timer, &ticks, sizeof ticks); }) == -1 && errno != EAGAIN)
        throw ExSysErrorWindows(sourceName, __LINE__);
}

void PeriodicTimerLinux::replaceTimer()
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
    return 0.001;  // seconds: intervals are cut to whole milliseconds on every system
}

}  // namespace Vn
