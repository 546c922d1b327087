#pragma once

#include <base/baseexport.h>

namespace Vn
{

/// Byte order: of this machine, and reversed.
///
///     const std::uint32_t magic = Vn::OsEndian::invertIf(!Vn::OsEndian::isBigEndian(), stored);
///
/// Reversing is done on the bytes of a value, never on the number, so it takes and gives every bit pattern. Beware of
/// floating-point results: a reversed pattern may be a signalling NaN, whose bits some processors change when it
/// passes through a register. Keep stored patterns in integers. Static and stateless: any thread; throws nothing.
/// Tests: tests/base/osendiantest.cpp.
class VN_BASE_EXPORT OsEndian
{
public:
    OsEndian() = delete;

    /// Whether the most significant byte comes first; found at run time. False on x86.
    static bool isBigEndian();

    /// @{
    /// The value with its bytes in reverse order; applied twice it gives the value back.
    ///
    ///     unsigned char   0x12         ->  0x12
    ///     unsigned short  0x1234       ->  0x3412
    ///     unsigned int    0x12345678   ->  0x78563412
    ///     float           1.0f         ->  4.6006e-41f: the bit pattern 0x3F800000 becomes 0x0000803F
    ///     unsigned long   1            ->  1 << 56 on Linux, where it has 8 bytes, and 1 << 24 on Windows, where 4
    ///
    /// For what goes into files take a type whose size is fixed, such as std::uint32_t.
    static signed char invert(signed char value);
    static unsigned char invert(unsigned char value);
    static short invert(short value);
    static unsigned short invert(unsigned short value);
    static int invert(int value);
    static unsigned int invert(unsigned int value);
    static float invert(float value);
    static long invert(long value);
    static unsigned long invert(unsigned long value);
    static long long invert(long long value);
    static unsigned long long invert(unsigned long long value);
    static double invert(double value);
    /// @}

    /// @{
    /// invert(value) if `condition` is true, otherwise the value as it is. For data that tells its own byte order.
    ///
    ///     invertIf(false, 0x1234)  ->  0x1234
    ///
    static signed char invertIf(bool condition, signed char value);
    static unsigned char invertIf(bool condition, unsigned char value);
    static short invertIf(bool condition, short value);
    static unsigned short invertIf(bool condition, unsigned short value);
    static int invertIf(bool condition, int value);
    static unsigned int invertIf(bool condition, unsigned int value);
    static float invertIf(bool condition, float value);
    static long invertIf(bool condition, long value);
    static unsigned long invertIf(bool condition, unsigned long value);
    static long long invertIf(bool condition, long long value);
    static unsigned long long invertIf(bool condition, unsigned long long value);
    static double invertIf(bool condition, double value);
    /// @}
};

}  // namespace Vn
