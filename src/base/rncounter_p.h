// Private to rnhistogram.imp and rnhistogrambi.imp.
#pragma once

#include <cstdint>
#include <type_traits>

namespace Vn
{

/// `total` after 1 was added to it `count` times in T, one addition at a time.
///
///     addOnes(5.0f, 3)         ->  8
///     addOnes(16777216.0f, 3)  ->  16777216: a float no longer holds the next integer
///     addOnes(0.5f, 3)         ->  3.5
///
/// A single addition gives the same only while each step on the way is an integer that T holds
/// exactly; that is the case in all but odd uses. The loop serves the rest.
template <class T>
T addOnes(T total, std::uint32_t count)
{
    constexpr T limit = std::is_same_v<T, float> ? T(16777216.0) : T(9007199254740992.0);  // 2^24, 2^53
    const T sum = total + static_cast<T>(count);
    if (total >= T(0) && sum <= limit && total == static_cast<T>(static_cast<std::int64_t>(total)))
        return sum;
    for (std::uint32_t i = 0; i < count; ++i)
        total += T(1);
    return total;
}

}  // namespace Vn
