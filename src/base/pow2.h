#pragma once

#include <base/baseexport.h>

#include <bit>

namespace Vn
{

/// Powers of two in an unsigned int. Static only; any thread, no start-up.
///
///     Vn::Pow2::ceil(600);    // 1024
///
/// Tests: tests/base/pow2test.cpp.
class VN_BASE_EXPORT Pow2
{
public:
    Pow2() = delete;

    /// 2 to the power `n`, taken modulo 32.
    static unsigned exp(unsigned n) { return 1u << (n % 32u); }

    /// The least power of two at or above `n`; 0 for 0. Above 2147483648 there is none in 32 bits, the shift wraps and
    /// the result is 1.
    static unsigned ceil(unsigned n) { return n < 2 ? n : exp(highestBit(n - 1) + 1); }

    /// Index of the highest set bit. Throws ExInternalError ("n != 0") for 0, which has none.
    static unsigned log2Floor(unsigned n)
    {
        if (n == 0)
            throwNoBitSet();
        return highestBit(n);
    }

    /// The least k such that 2 to the power k is at or above `n`; 32 above 2147483648, and 32 for 0.
    static unsigned log2Ceil(unsigned n) { return n == 1 ? 0 : highestBit(n - 1) + 1; }

private:
    [[noreturn]] static void throwNoBitSet();

    static unsigned highestBit(unsigned n) { return 31u - static_cast<unsigned>(std::countl_zero(n)); }
};

}  // namespace Vn
