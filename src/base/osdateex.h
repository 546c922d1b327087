#pragma once

#include <base/exbase.h>

#include <stdexcept>

namespace Vn
{

/// Family of the exceptions of dates.
///
///     catch (Vn::OsDateEx const& failure) { ... }
///
/// Tests: tests/base/osdateutiltest.cpp.
class VN_BASE_EXPORT OsDateEx : public ExBase
{
public:
    class ExInvalidDate;

protected:
    /// For the family's own classes.
    OsDateEx(char const* file, int line);
};

/// A moment that has no calendar fields: 0x8000000000000000 ticks or more. OsDateUtil::convertToDateStruct() throws
/// it.
class VN_BASE_EXPORT OsDateEx::ExInvalidDate : public std::runtime_error, public OsDateEx
{
public:
    /// The reason is "Invalid date specified."
    ExInvalidDate(char const* file, int line);

    VN_EX_MEMBERS();
};

}  // namespace Vn
