// Stands in for the system calls of processes, signals between them, the system's facts and its zones, in this program
// and in the libraries that it uses.
#include "systemcalls.h"

#include "real.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/utsname.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <cstdarg>

using VnTest::callFails;
using VnTest::isUnknownCall;

extern "C" int __clone(int (*body)(void*), void* stack, int flags, void* argument, ...) noexcept;

#define VN_STAND_IN extern "C" __attribute__((visibility("default")))

VN_STAND_IN ::pid_t fork() noexcept
{
    return callFails("fork") ? -1 : VN_REAL(fork)();
}

/// Processes that share memory.
VN_STAND_IN int __clone(int (*body)(void*), void* stack, int flags, void* argument, ...) noexcept
{
    std::va_list arguments;
    va_start(arguments, argument);
    int* const descriptor = va_arg(arguments, int*);
    va_end(arguments);
    if (!isUnknownCall() && !callFails("clone"))
        return VN_REAL(__clone)(body, stack, flags, argument, descriptor, nullptr, nullptr);
    *descriptor = 1;  // the system may have written there before it fails, and the number means nothing any more
    return -1;
}

/// Those that are made by their number bear the names of their numbers.
VN_STAND_IN long syscall(long number, ...) noexcept
{
    std::va_list arguments;
    va_start(arguments, number);
    long values[6];
    for (long& value : values)
        value = va_arg(arguments, long);
    va_end(arguments);
    if ((number == SYS_close_range && (isUnknownCall() || callFails("close_range"))) ||
        (number == SYS_openat && callFails("openat")) || (number == SYS_getppid && callFails("getppid")) ||
        (number == SYS_unshare && callFails("unshare")))
        return -1;
    return VN_REAL(syscall)(number, values[0], values[1], values[2], values[3], values[4], values[5]);
}

VN_STAND_IN int execve(char const* path, char* const* argv, char* const* environment) noexcept
{
    return callFails("execve") ? -1 : VN_REAL(execve)(path, argv, environment);
}

VN_STAND_IN int pipe2(int* ends, int flags) noexcept
{
    return callFails("pipe2") ? -1 : VN_REAL(pipe2)(ends, flags);
}

VN_STAND_IN int waitid(::idtype_t type, ::id_t process, ::siginfo_t* state, int options)
{
    return (type == P_PIDFD && isUnknownCall()) || callFails("waitid")
               ? -1
               : VN_REAL(waitid)(type, process, state, options);
}

VN_STAND_IN int socketpair(int domain, int type, int protocol, int* ends) noexcept
{
    return callFails("socketpair") ? -1 : VN_REAL(socketpair)(domain, type, protocol, ends);
}

VN_STAND_IN ::ssize_t send(int file, void const* buffer, std::size_t size, int flags)
{
    return callFails("send") ? -1 : VN_REAL(send)(file, buffer, size, flags);
}

VN_STAND_IN ::ssize_t recv(int file, void* buffer, std::size_t size, int flags)
{
    return callFails("recv") ? -1 : VN_REAL(recv)(file, buffer, size, flags);
}

VN_STAND_IN int poll(::pollfd* files, ::nfds_t count, int timeout)
{
    return callFails("poll") ? -1 : VN_REAL(poll)(files, count, timeout);
}

VN_STAND_IN ::pid_t waitpid(::pid_t process, int* status, int options)
{
    return callFails("waitpid") ? -1 : VN_REAL(waitpid)(process, status, options);
}

VN_STAND_IN int chdir(char const* path) noexcept
{
    return callFails("chdir") ? -1 : VN_REAL(chdir)(path);
}

VN_STAND_IN int uname(::utsname* names) noexcept
{
    return callFails("uname") ? -1 : VN_REAL(uname)(names);
}

VN_STAND_IN ::ssize_t readlink(char const* path, char* buffer, std::size_t size) noexcept
{
    return callFails("readlink") ? -1 : VN_REAL(readlink)(path, buffer, size);
}

VN_STAND_IN ::tm* localtime_r(::time_t const* time, ::tm* fields) noexcept
{
    return callFails("localtime_r") ? nullptr : VN_REAL(localtime_r)(time, fields);
}

VN_STAND_IN ::tm* gmtime_r(::time_t const* time, ::tm* fields) noexcept
{
    return callFails("gmtime_r") ? nullptr : VN_REAL(gmtime_r)(time, fields);
}

VN_STAND_IN ::time_t mktime(::tm* fields) noexcept
{
    return callFails("mktime") ? -1 : VN_REAL(mktime)(fields);
}
