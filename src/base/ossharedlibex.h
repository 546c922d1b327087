#pragma once

#include <base/exbase.h>

#include <stdexcept>

namespace Vn
{

/// Family of the exceptions of shared libraries.
///
///     catch (Vn::OsSharedLibEx const& failure) { ... }
///
/// Messages show at most 256 bytes of a path. A null text counts as empty.
/// Tests: tests/base/ossharedlibtest.cpp.
class VN_BASE_EXPORT OsSharedLibEx : public ExBase
{
public:
    class ExCantOpenLib;
    class ExFunctionNotFound;

protected:
    /// For the family's own classes.
    OsSharedLibEx(char const* file, int line);
};

/// OsSharedLib::open() failed: no such file, no library, or something that the library needs is missing.
class VN_BASE_EXPORT OsSharedLibEx::ExCantOpenLib : public OsSharedLibEx, public std::runtime_error
{
public:
    /// The reason is "Can't open dynamic library '<path>': <systemText>." The system's text is cut to 512 bytes; a
    /// line end in it stays, as Windows puts one at its end.
    ExCantOpenLib(char const* file, int line, char const* path, char const* systemText);

    VN_EX_MEMBERS();
};

/// The library exports nothing of that name.
class VN_BASE_EXPORT OsSharedLibEx::ExFunctionNotFound : public OsSharedLibEx, public std::runtime_error
{
public:
    /// The reason is "Function '<function>' not found in dynamic library '<path>'." The name is cut to 64 bytes.
    ExFunctionNotFound(char const* file, int line, char const* path, char const* function);

    VN_EX_MEMBERS();
};

}  // namespace Vn
