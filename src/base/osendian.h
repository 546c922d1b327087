#pragma once

#include <base/baseexport.h>

namespace Vn
{

/// The order of bytes, here and reversed.
///
///     const std::uint32_t magic = Vn::OsEndian::invertIf(!Vn::OsEndian::isBigEndian(), stored);
///
/// Of a floating-point value the bits are reversed; a result that passes through a register may be a signalling
/// not-a-number. Static only, any thread.
/// Tests: tests/base/osendiantest.cpp.
class VN_BASE_EXPORT OsEndian
{
public:
    OsEndian() = delete;

    /// Found out at run time.
    static bool isBigEndian();

    /// The value with its bytes in reverse order. A `long` has 8 of them on Linux and 4 on Windows, so a stored value
    /// is better held in one of the types of a fixed size.
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

    /// The same if `condition` is true, else the value as it is.
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
};

}  // namespace Vn
