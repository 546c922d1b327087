#pragma once

#include <base/baseexport.h>

namespace Vn
{

/// Failed assertions as exceptions, so that the stop unwinds and is reported like any other failure. They are in
/// every build, release included.
///
///     if (!(_sigma > 0))
///         Vn::Assertions::throwAssertionFailed(sourceName, __LINE__, "_sigma > 0");
///
/// Every function throws ExInternalError. Null texts count as empty; the message is cut to 1,023 characters.
/// Tests: tests/base/assertionstest.cpp.
class VN_BASE_EXPORT Assertions
{
public:
    /// "Assertion '`condition`' failed."
    [[noreturn]] static void throwAssertionFailed(char const* file, int line, char const* condition);

    /// The same for a condition on a system call, with `error` (an `errno`) and its text.
    [[noreturn]] static void throwSysAssertionFailed(char const* file, int line, char const* condition, int error);

    /// What a program calls where it would otherwise abort.
    [[noreturn]] static void throwProgramAborted(char const* file, int line);
};

}  // namespace Vn
