#pragma once

#include <base/exbase.h>

#include <stdexcept>

namespace Vn
{

/// Root of the exceptions of the reference clock. Each class below is a std::logic_error as well.
///
///     catch (Vn::DtRefClockEx::SourceMismatch const&) {
///         askForAnotherRecording();
///     }
///
/// Tests: tests/base/dtreftimetest.cpp.
class VN_BASE_EXPORT DtRefClockEx : public ExBase
{
public:
    class GetCount;
    class SourceMismatch;

protected:
    /// For the classes of the family, which set the reason. The place of the throw is passed on to ExBase.
    DtRefClockEx(char const* file, int line);
};

/// A clock could not be read: "Reference clock failed to get clock value."
///
/// The library itself never throws it, as DtRefClockSourceHwCounter reports a failing counter as ExSysErrorANSI. It
/// is for clock sources of a program's own.
class VN_BASE_EXPORT DtRefClockEx::GetCount : public std::logic_error, public DtRefClockEx
{
public:
    /// Thrown in line `line` of the source `file`.
    GetCount(char const* file, int line);

    VN_EX_MEMBERS();
};

/// A count was taken from a clock of another name: "Clock source name does not match system reference clock."
///
/// Thrown by DtRefTimeFactory::create(), which compares names exactly: "hwcounter" is another clock than "HwCounter".
class VN_BASE_EXPORT DtRefClockEx::SourceMismatch : public std::logic_error, public DtRefClockEx
{
public:
    /// Thrown in line `line` of the source `file`.
    SourceMismatch(char const* file, int line);

    VN_EX_MEMBERS();
};

}  // namespace Vn
