#pragma once

#include <base/baseexport.h>

namespace Vn
{

/// The process's environment.
///
///     Vn::OsEnv::putVariable("TZ=UTC");
///     char const* const zone = Vn::OsEnv::getVariable("TZ");    // null if it isn't set
///
/// Static only. The C library's environment has no lock: putVariable() must not run while another thread reads.
/// Tests: tests/base/osenvtest.cpp.
class VN_BASE_EXPORT OsEnv
{
public:
    OsEnv() = delete;

    /// The value, or null. The text belongs to the environment and lasts until the variable changes. Null or "" as
    /// the name: null.
    static char const* getVariable(char const* name);

    /// Takes over `NAME=value`, copied; "NAME=" leaves the variable unset. Throws ExInternalError ("Could not set
    /// environment variable") for anything else, and where the system refuses.
    static void putVariable(char const* setting);
};

}  // namespace Vn
