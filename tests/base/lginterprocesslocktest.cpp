#include <base/lginterprocesslock.h>

#include "child.h"
#include "expectchild.h"
#include "lockname.h"
#include "tempfolder.h"

#include <base/exsyserror.h>
#include <base/lginterprocesslockname_p.h>
#include <base/objptr.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

using Vn::ExSysErrorWindows;
using Vn::LgInterProcessLock;
using Vn::LgInterProcessLockGuard;
using Vn::ObjPtr;
using VnTest::Child;
using VnTest::ChildRun;
using VnTest::LockName;

namespace
{
using Lock = ObjPtr<LgInterProcessLock>;

Lock make(std::string const& name)
{
    return Lock(LgInterProcessLock::create(name.c_str()));
}
}  // namespace

TEST(LgInterProcessLock, fileNamesAreDifferentAndPlain)
{
    const struct
    {
        std::string lock;
        char const* file;
    } table[] = {
        {"", ""},         {"renderer-log_2", "renderer-log_2"},
        {"a b", "a%20b"}, {"a/b", "a%2fb"},
        {"..", "%2e%2e"}, {"%20", "%2520"},
        {"~", "%7e"},     {"\xFF\n", "%ff%0a"},
    };
    for (auto const& row : table)
        EXPECT_EQ(Vn::getLockFileName(row.lock), row.file);
    EXPECT_EQ(Vn::getLockFileName(std::string(200, 'x')), std::string(200, 'x'));
    const std::string cut = Vn::getLockFileName(std::string(201, 'x'));
    EXPECT_EQ(cut.substr(0, 201), std::string(200, 'x') + "~");
    EXPECT_EQ(cut.size(), 217u);
    EXPECT_NE(cut, Vn::getLockFileName(std::string(202, 'x')));
    EXPECT_EQ(Vn::getLockFileName(std::string(100, '/')).size(), 217u);
}

TEST(LgInterProcessLock, itsHolderMayTakeItAgainThroughAnyObjectOfItsName)
{
    const VnTest::TempFolder folder;
    const LockName name(folder);
    const Lock one = make(name.get()), two = make(name.get());
    one->lock();
    one->lock();
    two->lock();
    one->unlock();
    one->unlock();
    two->unlock();
    EXPECT_THROW(one->unlock(), ExSysErrorWindows);
    EXPECT_THROW(two->unlock(), ExSysErrorWindows);
}

TEST(LgInterProcessLock, onlyTheHolderUnlocks)
{
    const VnTest::TempFolder folder;
    const LockName name(folder);
    const Lock lock = make(name.get());
    EXPECT_THROW(lock->unlock(), ExSysErrorWindows);
    const LgInterProcessLockGuard guard(lock.get());
    std::thread([&lock] { EXPECT_THROW(lock->unlock(), ExSysErrorWindows); }).join();
}

TEST(LgInterProcessLock, locksOfDifferentNamesAreIndependent)
{
    const VnTest::TempFolder folder;
    const LockName name(folder, " 1"), otherName(folder, " 2");
    const Lock one = make(name.get()), two = make(otherName.get());
    const Lock nameless(LgInterProcessLock::create(nullptr)), other(LgInterProcessLock::create(nullptr));
    const LgInterProcessLockGuard guard(one.get());
    const LgInterProcessLockGuard namelessGuard(nameless.get());
    // A thread that had to wait for this one would never end.
    std::thread([&two, &other] {
        const LgInterProcessLockGuard inner(two.get());
        const LgInterProcessLockGuard innerNameless(other.get());
    }).join();
}

TEST(LgInterProcessLock, threadsExcludeEachOther)
{
    const VnTest::TempFolder folder;
    const LockName name(folder);
    long count = 0;  // not atomic: a race shows as a lost step, and under the thread sanitizer
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&count, &name] {
            const Lock lock = make(name.get());
            for (int j = 0; j < 500; ++j) {
                const LgInterProcessLockGuard guard(lock.get());
                ++count;
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(count, 2000);
}

VN_CHILD(lgLockCount)
{
    const Lock lock = make(argv[1]);
    for (int i = 0; i < 300; ++i) {
        const LgInterProcessLockGuard guard(lock.get());
        long count = 0;
        std::ifstream(argv[2]) >> count;
        std::ofstream(argv[2]) << count + 1;
    }
    return 0;
}

TEST(LgInterProcessLock, processesExcludeEachOther)
{
    const VnTest::TempFolder folder;
    const LockName name(folder);
    const std::string path = folder.file("count", "0");
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&name, &path] {
            EXPECT_EQ(Child("lgLockCount").arguments({name.get(), path}).run().exitCode, 0);
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(VnTest::contentOf(path), "1200");
}

#if defined(_WIN32)  // elsewhere any text is a name
TEST(LgInterProcessLock, aNameThatTheSystemRefusesIsTold)
{
    const auto refuses = [](std::string const& name) {
        try {
            const Lock lock = make(name);
        } catch (ExSysErrorWindows const& failure) {
            EXPECT_STREQ(failure.getFileName(), "src/base/lginterprocesslock");
            return failure.getErrorCode() != 0;
        }
        return false;
    };
    EXPECT_TRUE(refuses("no such\\namespace"));
    EXPECT_FALSE(refuses(std::string(260, 'n')));
    EXPECT_TRUE(refuses(std::string(261, 'n')));
}
#endif

VN_CHILD(lgLockAndDie)
{
    LgInterProcessLock* const lock = LgInterProcessLock::create(argv[1]);
    lock->lock();
    std::_Exit(7);
}

TEST(LgInterProcessLock, aHolderThatDiesHoldsNobodyUp)
{
    const VnTest::TempFolder folder;
    const LockName name(folder);
    const Lock lock = make(name.get());
    const ChildRun run = Child("lgLockAndDie").arguments({name.get()}).run();
    EXPECT_EQ(run.exitCode, 7);
#if defined(_WIN32)
    try {
        lock->lock();
        ADD_FAILURE() << "the first one is told";
    } catch (ExSysErrorWindows const& failure) {
        EXPECT_EQ(failure.getErrorCode(), 735);  // ERROR_ABANDONED_WAIT_0
    }
    EXPECT_THROW(lock->unlock(), ExSysErrorWindows) << "and doesn't hold it";
#endif
    std::thread([&lock] { const LgInterProcessLockGuard guard(lock.get()); }).join();
    const LgInterProcessLockGuard guard(lock.get());
}

TEST(LgInterProcessLock, aThreadThatEndsHoldsNobodyUp)
{
    const VnTest::TempFolder folder;
    const LockName name(folder);
    const Lock lock = make(name.get());
    std::thread([&lock] {
        lock->lock();
        lock->lock();
    }).join();
#if defined(_WIN32)
    EXPECT_THROW(lock->lock(), ExSysErrorWindows);
#endif
    const LgInterProcessLockGuard guard(lock.get());
}

VN_CHILD(lgLockStatic)
{
    // Locked and unlocked when the process has nearly ended.
    struct AtTheEnd
    {
        explicit AtTheEnd(std::string const& name) : lock(make(name)) {}
        ~AtTheEnd()
        {
            const LgInterProcessLockGuard guard(lock.get());
            std::cout << "locked\n" << std::flush;
        }
        Lock lock;
    };
    static const AtTheEnd atTheEnd(argv[1]);
    const LgInterProcessLockGuard guard(atTheEnd.lock.get());
    return 0;
}

TEST(LgInterProcessLock, worksInTheLastDestructors)
{
    const VnTest::TempFolder folder;
    const LockName name(folder);
    const ChildRun run = Child("lgLockStatic").arguments({name.get()}).run();
    EXPECT_EQ(run.out, "locked\n");
    EXPECT_EQ(run.exitCode, 0);
}
