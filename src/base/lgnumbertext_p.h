// Private to lgstream.cpp.
#pragma once

#include <bit>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>

namespace Vn
{

/// An integer in decimal, on the stack: -17 gives "-17". `long long` would fit as well.
class LgNumberText
{
public:
    template <class Integer>
    explicit LgNumberText(Integer value)
        : _size(static_cast<std::size_t>(std::to_chars(_text, _text + sizeof _text, value).ptr - _text))
    {}

    char const* get() const { return _text; }
    std::size_t getSize() const { return _size; }

private:
    char _text[24];
    std::size_t _size;
};

/// A floating-point number with six digits behind the point, as "%f" and "%Lf" give it in the "C" locale: rounded
/// half to even from the exact value.
///
///     0.1        ->  "0.100000"
///     -0.0       ->  "-0.000000"
///
/// Numbers below 2^64 are exact fractions over a power of two, and one product of 128 bits and one rounding give
/// their digits. Larger ones, infinities and NaN are rare and take the standard library's way.
template <class Number>
class LgFixedText
{
public:
    /// The comparison is written so that NaN fails it. A mantissa of more than 64 bits, which no platform of ours
    /// has, would not fit below.
    explicit LgFixedText(Number value) : _size(0)
    {
        if (!(std::fabs(value) < Number(18446744073709551616.0)) || mantissaBits > 64)
            formatAnything(value);
        else
            formatBelow2To64(value);
    }

    char const* get() const { return _text; }
    std::size_t getSize() const { return _size; }

    /// Replaces a locale's decimal mark, which may be any text, by a point; six digits follow it.
    ///
    ///     "1,500000"  ->  "1.500000"
    ///     "inf"       ->  "inf"
    static void restorePoint(char* text)
    {
        const std::size_t size = std::strlen(text);
        const std::size_t mark = std::strspn(text, "-0123456789");
        if (mark + 7 > size || std::strspn(text + size - 6, "0123456789") != 6)
            return;
        text[mark] = '.';
        std::memmove(text + mark + 1, text + size - 6, 7);
    }

private:
    static constexpr int mantissaBits = std::numeric_limits<Number>::digits;
    static constexpr std::uint32_t million = 1000000;
    __extension__ typedef unsigned __int128 Wide;

    /// Sign, whole part and millionths, each exact.
    void formatBelow2To64(Number value)
    {
        int shift = 0;
        const std::uint64_t mantissa = decompose(value, shift);
        std::uint64_t whole = 0;
        std::uint64_t millionths = 0;
        split(mantissa, shift, whole, millionths);
        if (std::signbit(value))
            _text[_size++] = '-';
        _size = static_cast<std::size_t>(std::to_chars(_text + _size, _text + sizeof _text, whole).ptr - _text);
        _text[_size++] = '.';
        for (std::uint32_t unit = million / 10, rest = static_cast<std::uint32_t>(millionths); unit != 0;
             unit /= 10) {
            _text[_size++] = static_cast<char>('0' + rest / unit);
            rest %= unit;
        }
    }

    /// The absolute value as a mantissa of 64 bits over 2^shift. Denormal numbers, which all print as zero, come out
    /// wrong but small enough to print as zero.
    static std::uint64_t decompose(double value, int& shift)
    {
        const auto bits = std::bit_cast<std::uint64_t>(value);
        shift = 64 + 1022 - static_cast<int>(bits >> 52 & 0x7FF);
        return (bits << 11) | (std::uint64_t(1) << 63);
    }

    /// The same without a look at the format, which differs among platforms.
    static std::uint64_t decompose(long double value, int& shift)
    {
        int exponent = 0;
        const long double fraction = std::frexp(std::fabs(value), &exponent);
        shift = 64 - exponent;
        return static_cast<std::uint64_t>(std::ldexp(fraction, 64));
    }

    /// Whole part and millionths of mantissa / 2^shift; shift is at least 0. Rounds half to even.
    static void split(std::uint64_t mantissa, int shift, std::uint64_t& whole, std::uint64_t& millionths)
    {
        // Below 2^-22 everything is less than half a millionth, zero included.
        if (shift >= 64 + 22)
            return;
        whole = shift < 64 ? mantissa >> shift : 0;
        const std::uint64_t part = shift < 64 ? mantissa & ((std::uint64_t(1) << shift) - 1) : mantissa;
        const Wide product = Wide(part) * million;
        millionths = static_cast<std::uint64_t>(product >> shift);
        const Wide rest = product - (Wide(millionths) << shift);
        const Wide twice = rest * 2;
        const Wide one = Wide(1) << shift;
        // The remainder against one half, in whole numbers: no second rounding can creep in.
        if (twice > one || (twice == one && millionths % 2 != 0))
            ++millionths;
        // 0.9999996 rounds up into the whole part.
        if (millionths == million) {
            millionths = 0;
            ++whole;
        }
    }

    /// Numbers from 2^64, infinities and NaN. Without a locale.
    void formatAnything(double value)
    {
        const auto end = std::to_chars(_text, _text + sizeof _text, value, std::chars_format::fixed, 6).ptr;
        _size = static_cast<std::size_t>(end - _text);
    }

    /// By the C library, whose decimal mark follows the program's locale and is replaced.
    void formatAnything(long double value)
    {
        std::snprintf(_text, sizeof _text, "%Lf", value);
        restorePoint(_text);
        _size = std::strlen(_text);
    }

    // Sign, whole part, point, six digits, and room for a locale's mark and a zero.
    char _text[static_cast<std::size_t>(std::numeric_limits<Number>::max_exponent10) + 32];
    std::size_t _size;
};

/// An address as the platform's "%p" shows it.
class LgAddressText
{
public:
    explicit LgAddressText(void const* address)
        : _size(static_cast<std::size_t>(std::snprintf(_text, sizeof _text, "%p", const_cast<void*>(address))))
    {}

    char const* get() const { return _text; }
    std::size_t getSize() const { return _size; }

private:
    char _text[32];
    std::size_t _size;
};

}  // namespace Vn
