#pragma once

#include <base/exbase.h>

#include <stdexcept>

namespace Vn
{

/// Family of the exceptions of Rational.
/// Tests: tests/base/rationaltest.cpp.
class VN_BASE_EXPORT RationalEx : public ExBase
{
public:
    class ExDenominatorZero;

protected:
    RationalEx(char const* file, int line);
};

/// A fraction over zero was asked for, directly or by a product of two rates that came out as zero.
class VN_BASE_EXPORT RationalEx::ExDenominatorZero : public std::invalid_argument, public RationalEx
{
public:
    ExDenominatorZero(char const* file, int line);

    VN_EX_MEMBERS();
};

}  // namespace Vn
