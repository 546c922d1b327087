#pragma once

#include <cstdint>
#include <limits>

/// Integer arithmetic in two's complement that wraps without a report. All counts and rate products of stream time
/// use it, so that results are the same on every platform. The operations go through unsigned types, because signed
/// overflow is undefined behaviour in C++.
///
///     DtWrap::times32(65536, 65536)                   ->  0
///     DtWrap::plus(9223372036854775807, 1)            ->  -9223372036854775808
///     DtWrap::over(-9223372036854775808, -1)          ->  -9223372036854775808
///     DtWrap::truncated(1e30)                         ->  -9223372036854775808
///
/// Functions of their arguments alone; any thread.
/// Tests: tests/base/dttimeindextest.cpp, tests/base/dttimetest.cpp.
namespace Vn::DtWrap
{

/// The low 32 bits of the product.
inline int times32(int a, int b)
{
    return static_cast<int>(static_cast<unsigned>(a) * static_cast<unsigned>(b));
}

/// @{
/// The low 64 bits of the sum, the difference and the product.
inline std::int64_t plus(std::int64_t a, std::int64_t b)
{
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(a) + static_cast<std::uint64_t>(b));
}

inline std::int64_t minus(std::int64_t a, std::int64_t b)
{
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(a) - static_cast<std::uint64_t>(b));
}

inline std::int64_t times(std::int64_t a, std::int64_t b)
{
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(a) * static_cast<std::uint64_t>(b));
}

/// @}

/// @{
/// Quotient truncated toward zero, and the remainder with the sign of the dividend.
///
/// The one quotient beyond 64 bits, the most negative value by -1, wraps to itself; processors would trap there. A
/// zero divisor is not checked and traps on most processors.
inline std::int64_t over(std::int64_t a, std::int64_t b)
{
    return b == -1 ? minus(0, a) : a / b;
}

inline std::int64_t modulo(std::int64_t a, std::int64_t b)
{
    return b == -1 ? 0 : a % b;
}
/// @}

/// The whole part of `value`, truncated toward zero. What 64 bits cannot hold becomes the most negative value, and so
/// does not-a-number.
// Intended: not clamped to the nearer limit, so 1e30 gives a negative count on every platform; do not mend.
template <class Float>
std::int64_t truncated(Float value)
{
    constexpr Float limit = static_cast<Float>(9223372036854775808.0);
    return value >= -limit && value < limit ? static_cast<std::int64_t>(value)
                                            : std::numeric_limits<std::int64_t>::min();
}

}  // namespace Vn::DtWrap
