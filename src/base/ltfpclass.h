#pragma once

#include <base/baseexport.h>

#include <cmath>

namespace Vn
{

/// What kind of number a floating-point value is.
///
///     Vn::LtFPClass::isFinite(width)    // false for not-a-number and for either infinity
///
///     value                isFinite  isNaN  isInfinity  isPositiveInfinity  isNegativeInfinity
///     0, -0, subnormals    yes       no     no          no                  no
///     +infinity            no        no     yes         yes                 no
///     -infinity            no        no     yes         no                  yes
///     not-a-number         no        yes    no          no                  no
///
/// Static functions without state; any thread may call them, before any package starts as well. A program that is
/// compiled with -ffast-math gets no meaningful answers, as its compiler assumes that all numbers are finite.
/// Tests: tests/base/ltfpclasstest.cpp.
class VN_BASE_EXPORT LtFPClass
{
public:
    LtFPClass() = delete;

    /// @{
    /// Whether `x` is an ordinary number, zeros and subnormal numbers included.
    static bool isFinite(float x) { return std::isfinite(x); }
    static bool isFinite(double x) { return std::isfinite(x); }
    /// @}

    /// @{
    /// Whether `x` is not-a-number, quiet or signalling and of either sign.
    static bool isNaN(float x) { return std::isnan(x); }
    static bool isNaN(double x) { return std::isnan(x); }
    /// @}

    /// @{
    /// Whether `x` is an infinity: of either sign, above all finite numbers, or below them.
    static bool isInfinity(float x) { return isPositiveInfinity(x) || isNegativeInfinity(x); }
    static bool isInfinity(double x) { return isPositiveInfinity(x) || isNegativeInfinity(x); }
    static bool isPositiveInfinity(float x) { return std::isinf(x) && !std::signbit(x); }
    static bool isPositiveInfinity(double x) { return std::isinf(x) && !std::signbit(x); }
    static bool isNegativeInfinity(float x) { return std::isinf(x) && std::signbit(x); }
    static bool isNegativeInfinity(double x) { return std::isinf(x) && std::signbit(x); }
    /// @}
};

}  // namespace Vn
