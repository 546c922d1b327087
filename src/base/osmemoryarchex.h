#pragma once

#include <base/exbase.h>

#include <stdexcept>

namespace Vn
{

/// Family of the exceptions of the memory architecture. They are part of the interface, for programs that know their
/// processors better; the library raises none of them, and reports an unknown cache as 0 bytes instead.
/// Tests: tests/base/osmemoryarchtest.cpp.
class VN_BASE_EXPORT OsMemoryArchEx : public ExBase
{
public:
    class ExUnknownCPU;
    class ExUnknownCPUBoard;

protected:
    /// For the family's own classes.
    OsMemoryArchEx(char const* file, int line);
};

/// The processor is of no known type.
class VN_BASE_EXPORT OsMemoryArchEx::ExUnknownCPU : public std::runtime_error, public OsMemoryArchEx
{
public:
    /// The reason is "Unknown CPU Type: Can not compute memory architecture parameters."
    ExUnknownCPU(char const* file, int line);

    VN_EX_MEMBERS();
};

/// The processor's board is of no known type.
class VN_BASE_EXPORT OsMemoryArchEx::ExUnknownCPUBoard : public std::runtime_error, public OsMemoryArchEx
{
public:
    /// The reason is "Unknown CPU Board Type: Can not compute memory architecture parameters."
    ExUnknownCPUBoard(char const* file, int line);

    VN_EX_MEMBERS();
};

}  // namespace Vn
