// sleeperwindows.cpp (Linux form: sleeperlinux.cpp)
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
constexpr ::DWORD settlingTimeMs = 10;

/// What a thread sleeps on: an event that the timer's thread sets.
struct ThreadRecord
{
    ThreadRecord() : event(::CreateEventA(nullptr, FALSE, FALSE, nullptr)) {}
    ~ThreadRecord() { ::CloseHandle(event); }
    ThreadRecord(ThreadRecord const&) = delete;
    ThreadRecord& operator=(ThreadRecord const&) = delete;

    ::HANDLE event;
};

/// A critical section as std::lock_guard takes it. Never deleted.
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
        ::timeBeginPeriod(_period);
        ::Sleep(settlingTimeMs);
        ::LARGE_INTEGER frequency;
        if (!::QueryPerformanceFrequency(&frequency)) {
            const ExSysErrorANSI failure(sourceName, __LINE__);
            ::timeEndPeriod(_period);
            throw failure;
        }
        _secondsPerCount =
            1.0 / (static_cast<double>(frequency.HighPart) * 4294967296.0 + static_cast<double>(frequency.LowPart));
        _tlsIndex = ::TlsAlloc();
    }

    ~SleeperWindows() override
    {
        for (ThreadRecord* record : _threadRecords)
            delete record;
        ::TlsFree(_tlsIndex);
        ::timeEndPeriod(_period);
    }

    /// The calling thread's record, made at its first call.
    ThreadRecord& getRecord()
    {
        void* const known = ::TlsGetValue(_tlsIndex);
        return known != nullptr ? *static_cast<ThreadRecord*>(known) : makeRecord();
    }

    double getCurrentTime() const override
    {
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
        const ::HANDLE event = getRecord().event;
        SleeperMath::waitInSteps(milliseconds, Multimedia::getCapabilities().wPeriodMax,
                                 [event](::UINT delayMs) { waitOnce(event, delayMs); });
        return true;
    }

private:
    static void waitOnce(::HANDLE event, ::UINT delayMs)
    {
        const ::MMRESULT timer = Multimedia::setEventLater(event, delayMs, TIME_ONESHOT);
        ::WaitForSingleObject(event, INFINITE);
        ::timeKillEvent(timer);
    }

    ThreadRecord& makeRecord()
    {
        auto record = std::make_unique<ThreadRecord>();
        const std::lock_guard guard(_lock);
        _threadRecords.push_back(record.get());
        ::TlsSetValue(_tlsIndex, record.get());
        return *record.release();
    }

    double _secondsPerCount;
    ::UINT _period;  ///< milliseconds
    Vector<ThreadRecord*> _threadRecords;
    CriticalSection _lock;  ///< guards _threadRecords
    ::DWORD _tlsIndex;
};
}  // namespace

Sleeper& Sleeper::getInstance()
{
    Sleeper& sleeper = InSingleton<Sleeper>::getInstance();
    // A program may have put a sleeper of its own in place.
    if (auto* const ours = dynamic_cast<SleeperWindows*>(&sleeper))
        ours->getRecord();
    return sleeper;
}

Sleeper* Sleeper::create()
{
    return new SleeperWindows;
}

}  // namespace Vn
