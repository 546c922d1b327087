// sleeperwindows.cpp (Linux form: sleeperlinux.cpp)
//
// A sleep has three steps: a one-shot multimedia timer is set, the thread waits for the event that the timer's thread
// will set, and the timer is removed. A delay beyond what the system takes is waited for in several such sleeps.
//
// Each thread has an event of its own, in a record that is created at the thread's first call and found again through
// thread-local storage. So any number of threads sleep at once without a lock; the lock guards only the list of the
// records. The events reset themselves when a wait ends. An event that two threads shared would wake only one of
// them.
//
// Records exist until the sleeper is destroyed, also those of threads that have ended. The sleeper must not be
// destroyed while a thread sleeps: its event would be closed under it, and the wait has no time-out.
#include <base/sleeper.h>

#include <base/exsyserror.h>
#include <base/multimediatimer_p.h>
#include <base/sleepermath_p.h>
#include <base/vector.h>

#include <windows.h>

#include <cstdint>
#include <memory>
#include <mutex>

namespace Vn
{
namespace
{
constexpr char sourceName[] = "src/base/sleeperwindows";
constexpr ::DWORD settlingTimeMs = 10;  ///< for timeBeginPeriod() to take effect before the first sleep

/// What a thread sleeps on: an event that the timer's thread sets, and that resets itself when a wait ends.
struct ThreadRecord
{
    ThreadRecord() : event(::CreateEventA(nullptr, FALSE, FALSE, nullptr)) {}
    ~ThreadRecord() { ::CloseHandle(event); }
    ThreadRecord(ThreadRecord const&) = delete;
    ThreadRecord& operator=(ThreadRecord const&) = delete;

    ::HANDLE event;
};

/// A critical section in the form that std::lock_guard takes.
// Intended: never deleted. There is one for each start of the package `profiling`, and it ends unlocked; do not mend.
class CriticalSection
{
public:
    CriticalSection() { ::InitializeCriticalSection(&_section); }
    void lock() { ::EnterCriticalSection(&_section); }
    void unlock() { ::LeaveCriticalSection(&_section); }

private:
    ::CRITICAL_SECTION _section;
};

/// Sleeps on the multimedia timers, each thread on its own event.
class SleeperWindows : public Sleeper
{
public:
    SleeperWindows() : _period(Multimedia::getCapabilities().wPeriodMin)
    {
        // The smallest period for as long as the sleeper exists: without it the system's tick is up to 16 ms.
        ::timeBeginPeriod(_period);
        ::Sleep(settlingTimeMs);
        ::LARGE_INTEGER frequency;
        if (!::QueryPerformanceFrequency(&frequency)) {
            const ExSysErrorANSI failure(sourceName, __LINE__);  // first, before another call changes the error
            ::timeEndPeriod(_period);
            throw failure;
        }
        _secondsPerCount =
            1.0 / (static_cast<double>(frequency.HighPart) * 4294967296.0 + static_cast<double>(frequency.LowPart));
        _tlsIndex = ::TlsAlloc();
    }

    ~SleeperWindows() override
    {
        // Also those of threads that have ended: a thread leaves its record behind.
        for (ThreadRecord* record : _threadRecords)
            delete record;
        ::TlsFree(_tlsIndex);
        ::timeEndPeriod(_period);
    }

    /// The calling thread's record, created at its first call. Needs no lock: the slot is the thread's own.
    ThreadRecord& getRecord()
    {
        void* const known = ::TlsGetValue(_tlsIndex);
        return known != nullptr ? *static_cast<ThreadRecord*>(known) : makeRecord();
    }

    double getCurrentTime() const override
    {
        // The result is not tested: with a frequency, as the constructor has found it, the call does not fail.
        ::LARGE_INTEGER counter = {};
        ::QueryPerformanceCounter(&counter);
        return static_cast<double>(counter.QuadPart) * _secondsPerCount;
    }

    double getResolution() const override { return Multimedia::getResolution(); }

    bool sleep(double seconds) override
    {
        const std::uint32_t milliseconds = SleeperMath::sleepMilliseconds(seconds);
        if (milliseconds == 0)
            return false;
        // Not all threads come by way of getInstance(): a reference may have been handed over. So the record is
        // created here too.
        const ::HANDLE event = getRecord().event;
        SleeperMath::waitInSteps(milliseconds, Multimedia::getCapabilities().wPeriodMax,
                                 [event](::UINT delayMs) { waitOnce(event, delayMs); });
        return true;
    }

private:
    // Intended: the result of timeSetEvent() is not tested, so if the system has no timer left this never returns; do
    // not mend.
    static void waitOnce(::HANDLE event, ::UINT delayMs)
    {
        const ::MMRESULT timer = Multimedia::setEventLater(event, delayMs, TIME_ONESHOT);
        ::WaitForSingleObject(event, INFINITE);
        ::timeKillEvent(timer);
    }

    ThreadRecord& makeRecord()
    {
        // Entered in the list before it is put into the slot: if the list cannot grow, no slot points to a freed
        // record.
        auto record = std::make_unique<ThreadRecord>();
        const std::lock_guard guard(_lock);
        _threadRecords.push_back(record.get());
        ::TlsSetValue(_tlsIndex, record.get());
        return *record.release();
    }

    double _secondsPerCount;
    ::UINT _period;                        ///< milliseconds
    Vector<ThreadRecord*> _threadRecords;  ///< of all threads, freed by the destructor
    CriticalSection _lock;                 ///< guards _threadRecords
    ::DWORD _tlsIndex;                     ///< the slot with the calling thread's record
};
}  // namespace

Sleeper& Sleeper::getInstance()
{
    Sleeper& sleeper = InSingleton<Sleeper>::getInstance();
    // A program may have set a sleeper of its own, which has no records.
    if (auto* const ours = dynamic_cast<SleeperWindows*>(&sleeper))
        ours->getRecord();
    return sleeper;
}

Sleeper* Sleeper::create()
{
    return new SleeperWindows;
}

}  // namespace Vn
