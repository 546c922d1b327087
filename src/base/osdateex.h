#pragma once

#include <base/exbase.h>

#include <stdexcept>

namespace Vn
{

/// Family of the exceptions of dates.
/// Tests: tests/base/osdateutiltest.cpp.
class VN_BASE_EXPORT OsDateEx : public ExBase
{
public:
    class ExInvalidDate;

protected:
    OsDateEx(char const* file, int line);
};

/// A moment that the calendar has no fields for.
class VN_BASE_EXPORT OsDateEx::ExInvalidDate : public std::runtime_error, public OsDateEx
{
public:
    ExInvalidDate(char const* file, int line);

    VN_EX_MEMBERS();
};

}  // namespace Vn
