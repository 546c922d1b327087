#pragma once

#include <base/exbase.h>

#include <stdexcept>

namespace Vn
{

/// A condition that the program should never meet; assertions throw it.
///
///     throw Vn::ExInternalError(sourceName, __LINE__, "no such kind of cue");
///
/// Tests: tests/base/exbasetest.cpp.
class VN_BASE_EXPORT ExInternalError : public std::runtime_error, public ExBase
{
public:
    /// An error with that reason, cut to 1,023 characters, thrown in line `line` of the source `file`. A null
    /// `reason` leaves the message empty.
    ExInternalError(char const* file, int line, char const* reason);

    VN_EX_MEMBERS();
};

}  // namespace Vn
