#pragma once

#include <base/exbase.h>

#include <stdexcept>

namespace Vn
{

/// Family of the exceptions of shared libraries. Paths are cut to 256 bytes in the messages.
/// Tests: tests/base/ossharedlibtest.cpp.
class VN_BASE_EXPORT OsSharedLibEx : public ExBase
{
public:
    class ExCantOpenLib;
    class ExFunctionNotFound;

protected:
    OsSharedLibEx(char const* file, int line);
};

/// The system can't load a library.
class VN_BASE_EXPORT OsSharedLibEx::ExCantOpenLib : public OsSharedLibEx, public std::runtime_error
{
public:
    /// `systemText` is cut to 512 bytes; a line end at its end stays. Null texts are empty.
    ExCantOpenLib(char const* file, int line, char const* path, char const* systemText);

    VN_EX_MEMBERS();
};

/// A library has nothing of that name.
class VN_BASE_EXPORT OsSharedLibEx::ExFunctionNotFound : public OsSharedLibEx, public std::runtime_error
{
public:
    /// `function` is cut to 64 bytes. Null texts are empty.
    ExFunctionNotFound(char const* file, int line, char const* path, char const* function);

    VN_EX_MEMBERS();
};

}  // namespace Vn
