// What only the POSIX form of the lock has: files that somebody else may have put there, and children of `fork`.
#include <base/lginterprocesslock.h>

#include <base/exsyserror.h>
#include <base/lginterprocesslockname_p.h>
#include <base/objptr.h>

#include "child.h"
#include "gate.h"
#include "tempfolder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>
#include <thread>

using Vn::ExSysErrorWindows;
using Vn::LgInterProcessLock;
using Vn::LgInterProcessLockGuard;
using Vn::ObjPtr;

namespace
{
/// A name with a file that this test may put there, and that is gone behind it.
class LgLockFileTest : public testing::Test
{
protected:
    ~LgLockFileTest() override
    {
        ::unlink(path.c_str());
        ::rmdir(path.c_str());
    }

    int errorOfCreate() const
    {
        try {
            const ObjPtr<LgInterProcessLock> lock(LgInterProcessLock::create(name.c_str()));
        } catch (ExSysErrorWindows const& failure) {
            EXPECT_STREQ(failure.getFileName(), "src/base/lginterprocesslock");
            return failure.getErrorCode();
        }
        return 0;
    }

    VnTest::TempFolder folder;
    std::string name = "vnbase/test" + folder.path();
    std::string path = "/tmp/vnbase-" + std::to_string(::geteuid()) + "-lock-" + Vn::getLockFileName(name);
};
}  // namespace

TEST_F(LgLockFileTest, isTheOwnersAlone)
{
    const ObjPtr<LgInterProcessLock> lock(LgInterProcessLock::create(name.c_str()));
    struct ::stat status = {};
    ASSERT_EQ(::lstat(path.c_str(), &status), 0);
    EXPECT_TRUE(S_ISREG(status.st_mode));
    EXPECT_EQ(status.st_mode & 0777u, 0600u);
    EXPECT_EQ(status.st_uid, ::geteuid());
    EXPECT_EQ(errorOfCreate(), 0) << "one that is there already";
}

TEST_F(LgLockFileTest, aLinkIsNotFollowed)
{
    const std::string target = folder.path("target");
    ASSERT_EQ(::symlink(target.c_str(), path.c_str()), 0);
    EXPECT_EQ(errorOfCreate(), ELOOP);
    EXPECT_NE(::access(target.c_str(), F_OK), 0) << "nothing was made behind it";
    folder.file("target", "precious");
    EXPECT_EQ(errorOfCreate(), ELOOP);
    EXPECT_EQ(VnTest::contentOf(target), "precious");
}

TEST_F(LgLockFileTest, aSecondNameOfAnotherFileIsRefused)
{
    const std::string target = "/tmp/vnbase-test-" + std::to_string(::getpid());
    const int descriptor = ::open(target.c_str(), O_CREAT | O_WRONLY, 0600);
    ASSERT_NE(descriptor, -1);
    ::close(descriptor);
    const int linked = ::link(target.c_str(), path.c_str());
    const int error = errorOfCreate();
    const int again = errorOfCreate();
    ::unlink(target.c_str());
    ASSERT_EQ(linked, 0);
    EXPECT_EQ(error, EPERM);
    EXPECT_EQ(again, EPERM) << "it is still there";
}

TEST_F(LgLockFileTest, aDirectoryIsRefused)
{
    ASSERT_EQ(::mkdir(path.c_str(), 0700), 0);
    EXPECT_EQ(errorOfCreate(), EISDIR);
}

TEST_F(LgLockFileTest, aPipeIsRefusedAndNotWaitedFor)
{
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    EXPECT_EQ(errorOfCreate(), EPERM);
    EXPECT_EQ(errorOfCreate(), EPERM) << "it is still there";
}

TEST_F(LgLockFileTest, anotherOwnersFileIsRefused)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can give a file away";
    const int descriptor = ::open(path.c_str(), O_CREAT | O_WRONLY, 0666);
    ASSERT_NE(descriptor, -1);
    ASSERT_EQ(::fchown(descriptor, 65534, 65534), 0);
    ::close(descriptor);
    const int error = errorOfCreate();
    EXPECT_EQ(errorOfCreate(), error) << "it is still there";
    EXPECT_TRUE(error == EPERM || error == EACCES) << error;  // the latter where the system protects such folders
}

TEST_F(LgLockFileTest, namesOfAnyTextMakeLocks)
{
    for (std::string const& text : {std::string(), std::string("a/b/../c"), std::string("\x01\xFF\n"),
                                    std::string(10000, 'n'), std::string(5000, '/')}) {
        const std::string any = text + " of " + folder.path();
        const ObjPtr<LgInterProcessLock> lock(LgInterProcessLock::create(any.c_str()));
        {
            const LgInterProcessLockGuard guard(lock.get());
        }
        const std::string file = "/tmp/vnbase-" + std::to_string(::geteuid()) + "-lock-" + Vn::getLockFileName(any);
        EXPECT_EQ(::access(file.c_str(), F_OK), 0) << file;
    }
}

TEST(LgInterProcessLock, theFilesNameHasLettersDigitsDashAndUnderscoreAsTheyAre)
{
    EXPECT_EQ(Vn::getLockFileName("azAZ09-_"), "azAZ09-_");
    EXPECT_EQ(Vn::getLockFileName("`{@[/:,.^"), "%60%7b%40%5b%2f%3a%2c%2e%5e");
    EXPECT_EQ(Vn::getLockFileName("\x01\xff"), "%01%ff");
    EXPECT_EQ(Vn::getLockFileName(std::string(200, 'X')), std::string(200, 'X'));
    EXPECT_EQ(Vn::getLockFileName(std::string(201, 'X')).size(), 217u);
    EXPECT_NE(Vn::getLockFileName(std::string(201, 'X')), Vn::getLockFileName(std::string(202, 'X')));
}

TEST_F(LgLockFileTest, aFileThatWasClearedAwayIsMadeAnew)
{
    const ObjPtr<LgInterProcessLock> lock(LgInterProcessLock::create(name.c_str()));
    ASSERT_EQ(::unlink(path.c_str()), 0);
    const LgInterProcessLockGuard guard(lock.get());
    EXPECT_EQ(::access(path.c_str(), F_OK), 0);
}

TEST_F(LgLockFileTest, aReplacedFileIsLookedAtAgain)
{
    const ObjPtr<LgInterProcessLock> lock(LgInterProcessLock::create(name.c_str()));
    ASSERT_EQ(::unlink(path.c_str()), 0);
    ASSERT_EQ(::symlink(folder.path("target").c_str(), path.c_str()), 0);
    try {
        lock->lock();
        ADD_FAILURE() << "locked a link's target";
    } catch (ExSysErrorWindows const& failure) {
        EXPECT_EQ(failure.getErrorCode(), ELOOP);
    }
    ASSERT_EQ(::unlink(path.c_str()), 0);
    const LgInterProcessLockGuard guard(lock.get());  // and is none the worse
}

TEST_F(LgLockFileTest, aChildOfForkHoldsNothing)
{
    const ObjPtr<LgInterProcessLock> lock(LgInterProcessLock::create(name.c_str()));
    lock->lock();
    const ::pid_t child = ::fork();
    ASSERT_NE(child, -1);
    if (child == 0) {
        bool hasThrown = false;
        try {
            lock->unlock();
        } catch (ExSysErrorWindows const& failure) {
            hasThrown = failure.getErrorCode() == EPERM;
        }
        ::_exit(hasThrown ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    lock->unlock();  // still the parent's
    lock->lock();
    lock->unlock();
}

TEST_F(LgLockFileTest, aChildOfForkWaitsForItsParent)
{
    // The child asks while the parent holds the lock, and answers when it has got it: after the parent's own mark.
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const ObjPtr<LgInterProcessLock> lock(LgInterProcessLock::create(name.c_str()));
    lock->lock();
    const ::pid_t child = ::fork();
    ASSERT_NE(child, -1);
    if (child == 0) {
        lock->lock();
        const bool isWritten = ::write(ends[1], "c", 1) == 1;
        lock->unlock();
        ::_exit(isWritten ? 0 : 1);
    }
    ASSERT_EQ(::write(ends[1], "p", 1), 1);
    lock->unlock();
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    char marks[3] = {};
    ASSERT_EQ(::read(ends[0], marks, 2), 2);
    EXPECT_STREQ(marks, "pc");
    ::close(ends[0]);
    ::close(ends[1]);
}

TEST_F(LgLockFileTest, theLastOneToCloseItTakesTheFileAway)
{
    {
        const ObjPtr<LgInterProcessLock> one(LgInterProcessLock::create(name.c_str()));
        {
            const ObjPtr<LgInterProcessLock> two(LgInterProcessLock::create(name.c_str()));
            const LgInterProcessLockGuard guard(two.get());
        }
        EXPECT_EQ(::access(path.c_str(), F_OK), 0) << "the other one is left";
    }
    EXPECT_NE(::access(path.c_str(), F_OK), 0);
}

TEST_F(LgLockFileTest, aFileThatAnotherProcessHoldsStays)
{
    VnTest::Gate taken(folder.path("taken")), seen(folder.path("seen"));
    std::thread other([&] {
        const VnTest::ChildRun run =
            VnTest::Child("lgLockUntilSeen").arguments({name, taken.name(), seen.name()}).run();
        EXPECT_EQ(run.exitCode, 0) << run.err;
    });
    taken.wait();
    {
        const ObjPtr<LgInterProcessLock> lock(LgInterProcessLock::create(name.c_str()));
    }
    EXPECT_EQ(::access(path.c_str(), F_OK), 0);
    seen.open();
    other.join();
    EXPECT_NE(::access(path.c_str(), F_OK), 0);
}

VN_CHILD(lgLockUntilSeen)
{
    const ObjPtr<LgInterProcessLock> lock(LgInterProcessLock::create(argv[1]));
    const LgInterProcessLockGuard guard(lock.get());
    VnTest::Gate::open(argv[2]);
    VnTest::Gate::wait(argv[3]);
    return 0;
}

VN_CHILD(lgLockNeverDestroyed)
{
    static LgInterProcessLock* const lock = LgInterProcessLock::create(argv[1]);
    const LgInterProcessLockGuard guard(lock);
    return ::access(argv[2], F_OK) == 0 ? 0 : 1;
}

TEST_F(LgLockFileTest, aProcessThatEndsLeavesNoFile)
{
    const VnTest::ChildRun run = VnTest::Child("lgLockNeverDestroyed").arguments({name, path}).run();
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_NE(::access(path.c_str(), F_OK), 0);
}

TEST_F(LgLockFileTest, aChildOfForkTakesNoFileOfItsParentAway)
{
    auto lock = ObjPtr<LgInterProcessLock>(LgInterProcessLock::create(name.c_str()));
    LgInterProcessLock* const held = LgInterProcessLock::create(name.c_str());
    held->lock();
    delete held;  // this thread holds it all the same
    lock.reset();
    const ::pid_t child = ::fork();
    ASSERT_NE(child, -1);
    if (child == 0)
        std::exit(0);
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(::access(path.c_str(), F_OK), 0);
    const ObjPtr<LgInterProcessLock> again(LgInterProcessLock::create(name.c_str()));
    again->unlock();
}

VN_CHILD(lgLocksThatHaveGone)
{
    const ObjPtr<LgInterProcessLock> held(LgInterProcessLock::create(argv[1]));
    const LgInterProcessLockGuard guard(held.get());
    {
        const ObjPtr<LgInterProcessLock> gone(LgInterProcessLock::create((std::string(argv[1]) + " gone").c_str()));
    }
    const ::pid_t child = ::fork();
    if (child == 0)
        ::_exit(0);
    int status = -1;
    if (::waitpid(child, &status, 0) != child || status != 0)
        return 1;
    return ::access(argv[2], F_OK) == 0 ? 0 : 2;
}

TEST_F(LgLockFileTest, locksThatHaveGoneTroubleNeitherAForkNorTheEnd)
{
    const VnTest::ChildRun run = VnTest::Child("lgLocksThatHaveGone").arguments({name, path}).run();
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_NE(::access(path.c_str(), F_OK), 0);
    EXPECT_NE(::access((path + "%20gone").c_str(), F_OK), 0);
}
