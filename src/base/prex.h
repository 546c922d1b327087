#pragma once

#include <base/exbase.h>

#include <stdexcept>

namespace Vn
{

/// Family of the exceptions of the system's performance data.
/// Tests: tests/base/prperfcountertest.cpp.
class VN_BASE_EXPORT PrEx : public ExBase
{
public:
    class ExUnsupported;
    class ExBadCounterIndex;
    class ExBadCounterInstance;
    class ExBadCounterObjectIndex;

protected:
    PrEx(char const* file, int line);
};

/// The counter's value is of no fixed size.
class VN_BASE_EXPORT PrEx::ExUnsupported : public std::runtime_error, public PrEx
{
public:
    ExUnsupported(char const* file, int line);

    VN_EX_MEMBERS();
};

/// The object has no counter of that number. An index from 2^31 on shows as a negative number.
class VN_BASE_EXPORT PrEx::ExBadCounterIndex : public std::runtime_error, public PrEx
{
public:
    ExBadCounterIndex(char const* file, int line, unsigned int index);

    VN_EX_MEMBERS();
};

/// The object has no instance of that name.
class VN_BASE_EXPORT PrEx::ExBadCounterInstance : public std::runtime_error, public PrEx
{
public:
    ExBadCounterInstance(char const* file, int line, char const* name);

    VN_EX_MEMBERS();
};

/// The system has no object of that number. An index from 2^31 on shows as a negative number.
class VN_BASE_EXPORT PrEx::ExBadCounterObjectIndex : public std::runtime_error, public PrEx
{
public:
    ExBadCounterObjectIndex(char const* file, int line, unsigned int index);

    VN_EX_MEMBERS();
};

}  // namespace Vn
