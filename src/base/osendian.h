#pragma once

#include <base/baseexport.h>

#include <cstdint>

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

    /// The value with its bytes in reverse order.
    static signed char invert(signed char value);
    static unsigned char invert(unsigned char value);
    static short invert(short value);
    static unsigned short invert(unsigned short value);
    static int invert(int value);
    static unsigned int invert(unsigned int value);
    static float invert(float value);
    static std::int64_t invert(std::int64_t value);
    static std::uint64_t invert(std::uint64_t value);
    static double invert(double value);

    /// The same if `condition` is true, else the value as it is.
    static signed char invertIf(bool condition, signed char value);
    static unsigned char invertIf(bool condition, unsigned char value);
    static short invertIf(bool condition, short value);
    static unsigned short invertIf(bool condition, unsigned short value);
    static int invertIf(bool condition, int value);
    static unsigned int invertIf(bool condition, unsigned int value);
    static float invertIf(bool condition, float value);
    static std::int64_t invertIf(bool condition, std::int64_t value);
    static std::uint64_t invertIf(bool condition, std::uint64_t value);
    static double invertIf(bool condition, double value);
};

}  // namespace Vn
