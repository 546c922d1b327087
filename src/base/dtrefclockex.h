#pragma once

#include <base/exbase.h>

#include <stdexcept>

namespace Vn
{

/// Family of the exceptions of the reference clock.
/// Tests: tests/base/dtreftimetest.cpp.
class VN_BASE_EXPORT DtRefClockEx : public ExBase
{
public:
    class GetCount;
    class SourceMismatch;

protected:
    DtRefClockEx(char const* file, int line);
};

/// For clock sources whose reading can fail; the one over HwCounter can't.
class VN_BASE_EXPORT DtRefClockEx::GetCount : public std::logic_error, public DtRefClockEx
{
public:
    GetCount(char const* file, int line);

    VN_EX_MEMBERS();
};

/// A count was brought from a clock of another name.
class VN_BASE_EXPORT DtRefClockEx::SourceMismatch : public std::logic_error, public DtRefClockEx
{
public:
    SourceMismatch(char const* file, int line);

    VN_EX_MEMBERS();
};

}  // namespace Vn
