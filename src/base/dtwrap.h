#pragma once

#include <cstdint>
#include <limits>

/// Integer arithmetic in two's complement that wraps without a word: what every count and rate product is held to.
/// Unsigned types carry the wraps, as signed overflow has no meaning in the language.
namespace Vn::DtWrap
{

inline int times32(int a, int b)
{
    return static_cast<int>(static_cast<unsigned>(a) * static_cast<unsigned>(b));
}

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

/// Truncates toward zero. The one quotient beyond 64 bits, the most negative value by -1, wraps to itself. A zero
/// divisor is left to the machine.
inline std::int64_t over(std::int64_t a, std::int64_t b)
{
    return b == -1 ? minus(0, a) : a / b;
}

/// Sign of the dividend. A zero divisor is left to the machine.
inline std::int64_t modulo(std::int64_t a, std::int64_t b)
{
    return b == -1 ? 0 : a % b;
}

/// Truncates toward zero. What 64 bits don't hold, not-a-number included, becomes the most negative value: it isn't
/// clamped to the nearer limit.
template <class Float>
std::int64_t truncated(Float value)
{
    constexpr Float limit = static_cast<Float>(9223372036854775808.0);
    return value >= -limit && value < limit ? static_cast<std::int64_t>(value)
                                            : std::numeric_limits<std::int64_t>::min();
}

}  // namespace Vn::DtWrap
