#pragma once

#include <base/exbase.h>

#include <stdexcept>

namespace Vn
{

/// Family of the exceptions of the memory architecture. The library raises none of them: a processor that tells
/// nothing of its caches has sizes of 0.
/// Tests: tests/base/osmemoryarchtest.cpp.
class VN_BASE_EXPORT OsMemoryArchEx : public ExBase
{
public:
    class ExUnknownCPU;
    class ExUnknownCPUBoard;

protected:
    OsMemoryArchEx(char const* file, int line);
};

/// The processor is of no known type.
class VN_BASE_EXPORT OsMemoryArchEx::ExUnknownCPU : public std::runtime_error, public OsMemoryArchEx
{
public:
    ExUnknownCPU(char const* file, int line);

    VN_EX_MEMBERS();
};

/// The processor's board is of no known type.
class VN_BASE_EXPORT OsMemoryArchEx::ExUnknownCPUBoard : public std::runtime_error, public OsMemoryArchEx
{
public:
    ExUnknownCPUBoard(char const* file, int line);

    VN_EX_MEMBERS();
};

}  // namespace Vn
