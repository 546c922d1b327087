#pragma once

#include <base/exbase.h>

#include <stdexcept>

namespace Vn
{

/// Family of the exceptions of the system's performance data, which Windows alone has.
///
///     catch (Vn::PrEx const& failure) { ... }
///
/// Tests: tests/base/prperfcountertest.cpp.
class VN_BASE_EXPORT PrEx : public ExBase
{
public:
    class ExUnsupported;
    class ExBadCounterIndex;
    class ExBadCounterInstance;
    class ExBadCounterObjectIndex;

protected:
    /// For the family's own classes.
    PrEx(char const* file, int line);
};

/// The counter's value is of variable length, not of 32 or 64 bits.
class VN_BASE_EXPORT PrEx::ExUnsupported : public std::runtime_error, public PrEx
{
public:
    /// The reason is "Functionality unsupported by profiling package."
    ExUnsupported(char const* file, int line);

    VN_EX_MEMBERS();
};

/// The object has no counter of that number.
class VN_BASE_EXPORT PrEx::ExBadCounterIndex : public std::runtime_error, public PrEx
{
public:
    /// The reason for 6 is "Request with illegal counter index 6." From 2^31 on the text shows a negative number.
    ExBadCounterIndex(char const* file, int line, unsigned int index);

    VN_EX_MEMBERS();
};

/// The object has no instance of that name.
class VN_BASE_EXPORT PrEx::ExBadCounterInstance : public std::runtime_error, public PrEx
{
public:
    /// The reason for "9" is "Request with illegal counter instance name 9." A null name counts as empty.
    ExBadCounterInstance(char const* file, int line, char const* name);

    VN_EX_MEMBERS();
};

/// The system has no object of that number.
class VN_BASE_EXPORT PrEx::ExBadCounterObjectIndex : public std::runtime_error, public PrEx
{
public:
    /// The reason for 238 is "Request with illegal counter object index 238." From 2^31 on the text shows a negative
    /// number.
    ExBadCounterObjectIndex(char const* file, int line, unsigned int index);

    VN_EX_MEMBERS();
};

}  // namespace Vn
