// What only Windows has: locks of the system under which a thread ends.
#include "threadlogbody.h"

#include <windows.h>

#include <atomic>
#include <thread>

using namespace VnTest;
using Vn::LgTypes;

namespace
{
/// An event of the system, set for good. Not of the C++ runtime, whose own locks are not what is looked at here.
class Event
{
public:
    Event() : _handle(::CreateEventA(nullptr, TRUE, FALSE, nullptr)) {}
    ~Event() { ::CloseHandle(_handle); }
    Event(Event const&) = delete;
    Event& operator=(Event const&) = delete;

    void set() { ::SetEvent(_handle); }
    bool wait(::DWORD milliseconds = INFINITE)
    {
        return ::WaitForSingleObject(_handle, milliseconds) == WAIT_OBJECT_0;
    }

private:
    ::HANDLE _handle;
};

/// The lock under which libraries are loaded and threads begin.
class LoaderLock
{
public:
    LoaderLock()
    {
        find<::LONG(NTAPI*)(::ULONG, ::ULONG*, ::ULONG_PTR*)>("LdrLockLoaderLock")(0, nullptr, &_cookie);
    }
    ~LoaderLock() { find<::LONG(NTAPI*)(::ULONG, ::ULONG_PTR)>("LdrUnlockLoaderLock")(0, _cookie); }
    LoaderLock(LoaderLock const&) = delete;
    LoaderLock& operator=(LoaderLock const&) = delete;

private:
    template <class Call>
    static Call find(char const* name)
    {
        return reinterpret_cast<Call>(
            reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleA("ntdll.dll"), name)));
    }

    ::ULONG_PTR _cookie = 0;
};

Event* passed = nullptr;

/// The thread layer's storage was there first, so its callback runs before this one.
void WINAPI pass(void*)
{
    passed->set();
}

VN_CHILD(endsUnderTheLoadersLock)
{
    const Started start;
    const Vn::LgMinorGroup group = groupOf();
    Vn::ThreadLog log;
    Event hasLogged, mayEnd, hasPassed;
    passed = &hasPassed;
    const ::DWORD slot = ::FlsAlloc(pass);
    std::thread thread([&] {
        ::FlsSetValue(slot, &hasPassed);
        VN_LOG(group, LgTypes::Warning, "its last");
        hasLogged.set();
        mayEnd.wait();
    });
    hasLogged.wait();
    bool isPassed = false;
    {
        const LoaderLock lock;
        mayEnd.set();
        isPassed = hasPassed.wait(20000);  // only a thread that hangs takes that long
    }
    thread.join();
    ::FlsFree(slot);
    return isPassed ? 0 : 1;
}

TEST(ThreadLogWindows, aThreadsEndWaitsForNoLockOfTheLoader)
{
    const TempFolder folder;
    expectSuccess(logger("endsUnderTheLoadersLock", folder).run());
    EXPECT_EQ(messagesOf(folder.path("events.log")).size(), 1u);
}
}  // namespace
