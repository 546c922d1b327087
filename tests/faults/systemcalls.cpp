// Stands in for the system calls of the file layer, in this program and in the libraries that it uses.
#include "systemcalls.h"

#include "real.h"

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <linux/fs.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace
{
struct Plan
{
    char const* name = nullptr;
    int error = 0;
    int after = 0;
    int times = 0;
    int failures = 0;
    void (*action)() = nullptr;  ///< instead of the error
    ::pid_t spared = 0;          ///< the process whose calls succeed
};

thread_local Plan plan;
thread_local bool areTransfersShort = false;
thread_local bool isSystemOld = false;
thread_local bool areTypesHidden = false;
thread_local char const* nameOfMachine = nullptr;
thread_local char const* nameOfUsers = nullptr;
thread_local long typeOfFileSystems = 0;
thread_local void (*changeOfStatus)(struct ::stat& status) = nullptr;
thread_local VnTest::SystemCopies systemCopies = VnTest::SystemCopies::asItCan;

/// True if this call is to fail; the error is then the last one.
bool fails(char const* name)
{
    if (plan.name == nullptr || std::strcmp(plan.name, name) != 0 || plan.spared == ::getpid())
        return false;
    if (plan.after > 0) {
        --plan.after;
        return false;
    }
    if (plan.times == 0)
        return false;
    --plan.times;
    ++plan.failures;
    if (plan.action != nullptr) {
        plan.action();
        return false;
    }
    errno = plan.error;
    return true;
}

template <class Size>
Size transferable(Size size)
{
    return areTransfersShort ? std::min<Size>(size, 1) : size;
}
}  // namespace

#define VN_STAND_IN extern "C" __attribute__((visibility("default")))

VN_STAND_IN int open(char const* path, int flags, ...)
{
    std::va_list arguments;
    va_start(arguments, flags);
    const ::mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, ::mode_t) : 0;
    va_end(arguments);
    return fails("open") ? -1 : VN_REAL(open)(path, flags, mode);
}

VN_STAND_IN int openat(int folder, char const* path, int flags, ...)
{
    std::va_list arguments;
    va_start(arguments, flags);
    const ::mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, ::mode_t) : 0;
    va_end(arguments);
    return fails("openat") ? -1 : VN_REAL(openat)(folder, path, flags, mode);
}

VN_STAND_IN int fcntl(int file, int command, ...)
{
    std::va_list arguments;
    va_start(arguments, command);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    return fails("fcntl") ? -1 : VN_REAL(fcntl)(file, command, argument);
}

VN_STAND_IN int close(int file)
{
    const int result = VN_REAL(close)(file);
    return result == 0 && fails("close") ? -1 : result;
}

VN_STAND_IN ::ssize_t read(int file, void* buffer, std::size_t size)
{
    return fails("read") ? -1 : VN_REAL(read)(file, buffer, transferable(size));
}

VN_STAND_IN ::ssize_t write(int file, void const* buffer, std::size_t size)
{
    return fails("write") ? -1 : VN_REAL(write)(file, buffer, transferable(size));
}

VN_STAND_IN ::ssize_t copy_file_range(int source, ::off64_t* from, int target, ::off64_t* to, std::size_t size,
                                      unsigned flags)
{
    if (fails("copy_file_range"))
        return -1;
    if (systemCopies == VnTest::SystemCopies::never || systemCopies == VnTest::SystemCopies::byBlocks) {
        errno = EXDEV;
        return -1;
    }
    if (systemCopies == VnTest::SystemCopies::inSmallSteps)
        size = std::min<std::size_t>(size, 1000);
    return VN_REAL(copy_file_range)(source, from, target, to, size, flags);
}

/// As a file system that shares blocks: the whole content, from the start, and neither position moves.
static int shareBlocks(int target, int source)
{
    char block[4096];
    ::off_t done = 0;
    while (const ::ssize_t count = ::pread(source, block, sizeof block, done)) {
        if (count == -1 || ::pwrite(target, block, static_cast<std::size_t>(count), done) != count)
            return -1;
        done += count;
    }
    return 0;
}

VN_STAND_IN int ioctl(int file, unsigned long request, ...) noexcept
{
    std::va_list arguments;
    va_start(arguments, request);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    if (request != FICLONE)
        return VN_REAL(ioctl)(file, request, argument);
    if (fails("ioctl"))
        return -1;
    if (systemCopies == VnTest::SystemCopies::byBlocks)
        return shareBlocks(file, static_cast<int>(reinterpret_cast<std::intptr_t>(argument)));
    if (systemCopies == VnTest::SystemCopies::asItCan)
        return VN_REAL(ioctl)(file, request, argument);
    errno = EOPNOTSUPP;
    return -1;
}

VN_STAND_IN ::off_t lseek(int file, ::off_t offset, int origin) noexcept
{
    return fails("lseek") ? -1 : VN_REAL(lseek)(file, offset, origin);
}

VN_STAND_IN int ftruncate(int file, ::off_t size) noexcept
{
    return fails("ftruncate") ? -1 : VN_REAL(ftruncate)(file, size);
}

VN_STAND_IN int flock(int file, int operation) noexcept
{
    return fails("flock") ? -1 : VN_REAL(flock)(file, operation);
}

static int changed(int result, struct ::stat& status)
{
    if (result == 0 && changeOfStatus != nullptr)
        changeOfStatus(status);
    return result;
}

VN_STAND_IN int fstat(int file, struct ::stat* status) noexcept
{
    return fails("fstat") ? -1 : changed(VN_REAL(fstat)(file, status), *status);
}

VN_STAND_IN int stat(char const* path, struct ::stat* status) noexcept
{
    if (fails("stat"))
        return -1;
    return changed(
        VnTest::findReal(static_cast<int (*)(char const*, struct ::stat*)>(&::stat), "stat")(path, status),
        *status);
}

VN_STAND_IN int lstat(char const* path, struct ::stat* status) noexcept
{
    return fails("lstat") ? -1 : changed(VN_REAL(lstat)(path, status), *status);
}

VN_STAND_IN int fstatat(int folder, char const* path, struct ::stat* status, int flags) noexcept
{
    return fails("fstatat") ? -1 : changed(VN_REAL(fstatat)(folder, path, status, flags), *status);
}

VN_STAND_IN int statfs(char const* path, struct ::statfs* fileSystem) noexcept
{
    if (fails("statfs"))
        return -1;
    const int result = VnTest::findReal(static_cast<int (*)(char const*, struct ::statfs*)>(&::statfs),
                                        "statfs")(path, fileSystem);
    if (typeOfFileSystems != 0)
        fileSystem->f_type = typeOfFileSystems;
    return result;
}

VN_STAND_IN int faccessat(int folder, char const* path, int access, int flags) noexcept
{
    return fails("faccessat") ? -1 : VN_REAL(faccessat)(folder, path, access, flags);
}

VN_STAND_IN int mkdir(char const* path, ::mode_t mode) noexcept
{
    return fails("mkdir") ? -1 : VN_REAL(mkdir)(path, mode);
}

VN_STAND_IN int mkdirat(int folder, char const* path, ::mode_t mode) noexcept
{
    return fails("mkdirat") ? -1 : VN_REAL(mkdirat)(folder, path, mode);
}

VN_STAND_IN int rmdir(char const* path) noexcept
{
    return fails("rmdir") ? -1 : VN_REAL(rmdir)(path);
}

VN_STAND_IN int unlink(char const* path) noexcept
{
    return fails("unlink") ? -1 : VN_REAL(unlink)(path);
}

VN_STAND_IN int unlinkat(int folder, char const* path, int flags) noexcept
{
    return fails("unlinkat") ? -1 : VN_REAL(unlinkat)(folder, path, flags);
}

VN_STAND_IN int rename(char const* path, char const* target) noexcept
{
    return fails("rename") ? -1 : VN_REAL(rename)(path, target);
}

VN_STAND_IN int renameat2(int folder, char const* path, int targetFolder, char const* target,
                          unsigned flags) noexcept
{
    return fails("renameat2") ? -1 : VN_REAL(renameat2)(folder, path, targetFolder, target, flags);
}

VN_STAND_IN ::DIR* opendir(char const* path)
{
    return fails("opendir") ? nullptr : VN_REAL(opendir)(path);
}

VN_STAND_IN ::DIR* fdopendir(int folder)
{
    return fails("fdopendir") ? nullptr : VN_REAL(fdopendir)(folder);
}

VN_STAND_IN ::dirent* readdir(::DIR* folder)
{
    ::dirent* const entry = fails("readdir") ? nullptr : VN_REAL(readdir)(folder);
    if (entry != nullptr && areTypesHidden)
        entry->d_type = DT_UNKNOWN;
    return entry;
}

VN_STAND_IN char* getcwd(char* buffer, std::size_t size) noexcept
{
    return fails("getcwd") ? nullptr : VN_REAL(getcwd)(buffer, size);
}

VN_STAND_IN int gethostname(char* name, std::size_t size) noexcept
{
    if (fails("gethostname"))
        return -1;
    if (nameOfMachine == nullptr)
        return VN_REAL(gethostname)(name, size);
    std::strncpy(name, nameOfMachine, size);
    return 0;
}

// Its error is its result.
VN_STAND_IN int getpwuid_r(::uid_t user, ::passwd* entry, char* buffer, std::size_t size, ::passwd** found)
{
    *found = nullptr;
    if (fails("getpwuid_r"))
        return errno;
    if (nameOfUsers == nullptr)
        return VN_REAL(getpwuid_r)(user, entry, buffer, size, found);
    if (std::strlen(nameOfUsers) >= size)
        return ERANGE;
    *entry = {};
    entry->pw_name = std::strcpy(buffer, nameOfUsers);
    *found = entry;
    return 0;
}

VN_STAND_IN int setenv(char const* name, char const* value, int replaces) noexcept
{
    return fails("setenv") ? -1 : VN_REAL(setenv)(name, value, replaces);
}

void VnTest::failCall(char const* name, int error, int after, int times)
{
    plan = {name, error, after, times, 0, nullptr};
}

void VnTest::interruptCall(char const* name, void (*action)(), int after)
{
    plan = {name, 0, after, 1, 0, action};
}

bool VnTest::callFails(char const* name)
{
    return fails(name);
}

void VnTest::makeSystemOld(bool isOld)
{
    isSystemOld = isOld;
}

bool VnTest::isUnknownCall()
{
    if (isSystemOld)
        errno = ENOSYS;
    return isSystemOld;
}

int VnTest::stopFailingCalls()
{
    const int failures = plan.failures;
    plan = {};
    return failures;
}

void VnTest::hideTypesOfEntries(bool areHidden)
{
    areTypesHidden = areHidden;
}

void VnTest::failOnlyInCopies()
{
    plan.spared = ::getpid();
}

void VnTest::setTypeOfFileSystems(long type)
{
    typeOfFileSystems = type;
}

void VnTest::changeStatusOfFiles(void (*change)(struct ::stat& status))
{
    changeOfStatus = change;
}

void VnTest::nameMachine(char const* name)
{
    nameOfMachine = name;
}

void VnTest::nameAllUsers(char const* name)
{
    nameOfUsers = name;
}

void VnTest::setSystemCopies(SystemCopies copies)
{
    systemCopies = copies;
}

void VnTest::makeTransfersShort(bool areShort)
{
    areTransfersShort = areShort;
}
