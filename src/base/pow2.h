#pragma once

#include <base/baseexport.h>

#include <bit>

namespace Vn
{

/// Powers of two in an unsigned int.
///
///     Vn::Pow2::ceil(600);         // 1024
///     Vn::Pow2::log2Floor(600);    // 9
///     Vn::Pow2::log2Ceil(600);     // 10
///
/// Static functions without state; any thread may call them, before any package starts as well.
/// Tests: tests/base/pow2test.cpp.
class VN_BASE_EXPORT Pow2
{
public:
    Pow2() = delete;

    /// 2 to the power `n` modulo 32.
    ///
    ///     0 -> 1    31 -> 2147483648    33 -> 2
    ///
    static unsigned exp(unsigned n) { return 1u << (n % 32u); }

    /// The least power of two at or above `n`.
    ///
    ///     0 -> 0    1 -> 1    3 -> 4    4 -> 4    5 -> 8    2147483648 -> 2147483648
    ///
    /// Above 2147483648 there is none in 32 bits, and the result is 1.
    // Intended: the shift count wraps to 0 there; do not mend.
    static unsigned ceil(unsigned n) { return n < 2 ? n : exp(highestBit(n - 1) + 1); }

    /// Index of the highest set bit.
    ///
    ///     1 -> 0    3 -> 1    4 -> 2    2147483648 -> 31
    ///
    /// Throws ExInternalError ("n != 0") for 0, which has no bit set.
    static unsigned log2Floor(unsigned n)
    {
        if (n == 0)
            throwNoBitSet();
        return highestBit(n);
    }

    /// The least k such that 2 to the power k is at or above `n`.
    ///
    ///     0 -> 32    1 -> 0    2 -> 1    3 -> 2    2147483648 -> 31    2147483649 -> 32
    ///
    // Intended: 0 gives 32, because n - 1 wraps to the largest number; do not mend.
    static unsigned log2Ceil(unsigned n) { return n == 1 ? 0 : highestBit(n - 1) + 1; }

private:
    [[noreturn]] static void throwNoBitSet();

    /// Not for 0.
    static unsigned highestBit(unsigned n) { return 31u - static_cast<unsigned>(std::countl_zero(n)); }
};

}  // namespace Vn
