#pragma once

#include <base/exbase.h>

#include <exception>

namespace Vn
{

/// "Invalid exception thrown.": what a handler throws in place of an exception that nobody expected.
/// Tests: tests/base/exbasetest.cpp.
class VN_BASE_EXPORT ExBadException : public ExBase, public std::bad_exception
{
public:
    /// Its reason is always the same. `file` and `line` are the place of the throw.
    ExBadException(char const* file, int line);

    VN_EX_MEMBERS();
};

}  // namespace Vn
