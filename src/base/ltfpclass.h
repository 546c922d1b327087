#pragma once

#include <base/baseexport.h>

#include <cmath>

namespace Vn
{

/// What kind of number a floating-point value is. Static only; any thread, no start-up.
/// Tests: tests/base/ltfpclasstest.cpp.
class VN_BASE_EXPORT LtFPClass
{
public:
    LtFPClass() = delete;

    static bool isFinite(float x) { return std::isfinite(x); }
    static bool isFinite(double x) { return std::isfinite(x); }
    static bool isNaN(float x) { return std::isnan(x); }
    static bool isNaN(double x) { return std::isnan(x); }

    /// Either infinity.
    static bool isInfinity(float x) { return isPositiveInfinity(x) || isNegativeInfinity(x); }
    static bool isInfinity(double x) { return isPositiveInfinity(x) || isNegativeInfinity(x); }
    static bool isPositiveInfinity(float x) { return std::isinf(x) && !std::signbit(x); }
    static bool isPositiveInfinity(double x) { return std::isinf(x) && !std::signbit(x); }
    static bool isNegativeInfinity(float x) { return std::isinf(x) && std::signbit(x); }
    static bool isNegativeInfinity(double x) { return std::isinf(x) && std::signbit(x); }
};

}  // namespace Vn
