#pragma once

#include <base/exbase.h>

#include <stdexcept>

namespace Vn
{

/// A condition that the program should never meet; assertions throw it.
/// Tests: tests/base/exbasetest.cpp.
class VN_BASE_EXPORT ExInternalError : public std::runtime_error, public ExBase
{
public:
    /// A null `reason` leaves the message empty.
    ExInternalError(char const* file, int line, char const* reason);

    VN_EX_MEMBERS();
};

}  // namespace Vn
