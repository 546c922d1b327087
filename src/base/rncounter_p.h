#pragma once

#include <cstdint>
#include <type_traits>

namespace Vn
{

/// `count` times 1, added one by one to `total` in T. While the sum is an integer that T holds exactly it may be added at
/// once. Private to the library.
template <class T>
T addedOneByOne(T total, std::uint32_t count)
{
    constexpr T limit = std::is_same_v<T, float> ? T(16777216.0) : T(9007199254740992.0);
    const T sum = total + static_cast<T>(count);
    if (total >= T(0) && sum <= limit && total == static_cast<T>(static_cast<std::int64_t>(total)))
        return sum;
    for (std::uint32_t i = 0; i < count; ++i)
        total += T(1);
    return total;
}

}  // namespace Vn
