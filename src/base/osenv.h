#pragma once

#include <base/baseexport.h>

namespace Vn
{

/// The process's environment, which its children inherit.
///
///     Vn::OsEnv::putVariable("TZ=UTC");
///     char const* const zone = Vn::OsEnv::getVariable("TZ");    // null if it isn't set
///
/// Static only. The C library's environment has no lock: putVariable() must not run while another thread reads, and
/// that includes calls that read it behind the scenes, such as those for local time. Any number of threads may read.
/// Tests: tests/base/osenvtest.cpp.
class VN_BASE_EXPORT OsEnv
{
public:
    OsEnv() = delete;

    /// The value of a variable, or null if it is not set.
    ///
    ///     "HOME"       ->  "/home/anna"
    ///     "", null     ->  null
    ///
    /// The text belongs to the environment; it is valid until the variable changes. Throws nothing.
    static char const* getVariable(char const* name);

    /// Sets or removes one variable. The text is copied.
    ///
    ///     "A=1"           ->  A is "1"
    ///     "A=b=c"         ->  A is "b=c": the first "=" counts
    ///     "A="            ->  A is not set
    ///     "A", "=1", null ->  throws ExInternalError ("Could not set environment variable")
    ///
    /// Throws the same where the system refuses, as without memory.
    static void putVariable(char const* setting);
};

}  // namespace Vn
