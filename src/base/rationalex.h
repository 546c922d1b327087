#pragma once

#include <base/exbase.h>

#include <stdexcept>

namespace Vn
{

/// Root of the exceptions of Rational.
/// Tests: tests/base/rationaltest.cpp.
class VN_BASE_EXPORT RationalEx : public ExBase
{
public:
    class ExDenominatorZero;

protected:
    /// For the classes of the family, which set the reason. The place of the throw is passed on to ExBase.
    RationalEx(char const* file, int line);
};

/// A fraction with a zero denominator was asked for: "Illegal zero denominator."
///
///     Vn::Rational(1, 0)                              // throws
///     index.convert(Vn::Rational(0, 1), rate, style)  // throws for round_toward_zero: the ratio's denominator is 0
///
/// A product of two rates may also wrap to zero in 32 bits, which then throws in the same way. It is a
/// std::invalid_argument as well.
class VN_BASE_EXPORT RationalEx::ExDenominatorZero : public std::invalid_argument, public RationalEx
{
public:
    /// Thrown in line `line` of the source `file`.
    ExDenominatorZero(char const* file, int line);

    VN_EX_MEMBERS();
};

}  // namespace Vn
