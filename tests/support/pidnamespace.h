#pragma once

// For tests on Linux only.
#include <sched.h>
#include <unistd.h>

#include <iostream>

namespace VnTest
{

/// The exit code of a child body that the system doesn't allow to do its work.
constexpr int notAllowed = 77;

/// Lets the children of this thread live in a PID namespace of their own. False if the system doesn't allow it: root may,
/// and others where they may have user namespaces.
inline bool enterPidNamespace()
{
    return ::unshare(CLONE_NEWPID) == 0 || ::unshare(CLONE_NEWUSER | CLONE_NEWPID) == 0;
}

/// For bodies that did so, as their end: once the first process of the namespace has ended this one can start nothing
/// any more, and the look for leaks at the exit needs a process.
[[noreturn]] inline void leavePidNamespace()
{
    std::cout << std::flush;
    ::_exit(0);
}

}  // namespace VnTest
