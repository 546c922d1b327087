// Private to lgline_p.h, lgstream.cpp and lgtext.cpp.
#pragma once

#include <array>
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

/// All pairs of digits in a base: "00", "01" and so on.
template <unsigned base>
inline constexpr auto lgDigitPairs = [] {
    std::array<char, 2 * base * base> made{};
    for (unsigned i = 0; i < base * base; ++i) {
        made[2 * i] = "0123456789abcdef"[i / base];
        made[2 * i + 1] = "0123456789abcdef"[i % base];
    }
    return made;
}();

/// Writes a number zero-filled to `width`, which is even, and returns the end. Two digits at a time; the base is known to the
/// compiler, which then needs no division.
///
///     lgPutPadded<10, 6>(to, 25)     ->  "000025"
///     lgPutPadded<16, 8>(to, 6699)   ->  "00001a2b"
template <unsigned base, std::size_t width>
char* lgPutPadded(char* to, std::uint32_t number)
{
    for (std::size_t i = width; i != 0; number /= base * base) {
        i -= 2;
        std::memcpy(to + i, &lgDigitPairs<base>[2 * (number % (base * base))], 2);
    }
    return to + width;
}

// Each of the following classes is the text of a number, on the stack, and can also put the text straight into a ring:
// put() writes at most `longestDirect` characters, of a value for which isDirect() is true, and returns the end.

/// An integer in decimal: -17 gives "-17". `long long` would fit as well.
template <class Integer>
class LgNumberText
{
public:
    explicit LgNumberText(Integer value) : _size(static_cast<std::size_t>(put(_text, value) - _text)) {}

    char const* get() const { return _text; }
    std::size_t getSize() const { return _size; }

    /// Sign and digits of the largest 64-bit number.
    static constexpr std::uint32_t longestDirect = 21;

    static bool isDirect(Integer) { return true; }
    static char* put(char* to, Integer value) { return std::to_chars(to, to + longestDirect, value).ptr; }

private:
    char _text[longestDirect];
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
    explicit LgFixedText(Number value) : _size(0)
    {
        if (isDirect(value))
            _size = static_cast<std::size_t>(put(_text, value) - _text);
        else
            formatAnything(value);
    }

    char const* get() const { return _text; }
    std::size_t getSize() const { return _size; }

    /// Sign, 20 digits of the whole part, point, six digits.
    static constexpr std::uint32_t longestDirect = 28;

    /// Whether the number is below 2^64. The comparison is written so that NaN fails it. A mantissa of more than 64
    /// bits, as that of a `long double` on aarch64 and s390x, doesn't fit below.
    static bool isDirect(Number value)
    {
        return std::fabs(value) < Number(18446744073709551616.0) && mantissaBits <= 64;
    }

    static char* put(char* to, Number value)
    {
        const Decimal decimal = round(decompose(value));
        if (std::signbit(value))
            *to++ = '-';
        to = std::to_chars(to, to + 20, decimal.whole).ptr;
        *to++ = '.';
        return lgPutPadded<10, 6>(to, decimal.millionths);
    }

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
    __extension__ typedef unsigned __int128 Wide;  // NOLINT(modernize-use-using): __extension__ needs a declaration

    /// The number mantissa / 2^shift; shift is at least 0.
    struct Binary
    {
        std::uint64_t mantissa;
        int shift;
    };

    struct Decimal
    {
        std::uint64_t whole;
        std::uint32_t millionths;
    };

    /// The absolute value. Denormal numbers, which all print as zero, come out wrong but small enough to print as
    /// zero; zero itself as well.
    static Binary decompose(double value)
    {
        const auto bits = std::bit_cast<std::uint64_t>(value);
        return {(bits << 11) | (std::uint64_t(1) << 63), 64 + 1022 - static_cast<int>(bits >> 52 & 0x7FF)};
    }

    /// The same without a look at the format, which differs among platforms.
    static Binary decompose(long double value)
    {
        int exponent = 0;
        const long double fraction = std::frexp(std::fabs(value), &exponent);
        return {static_cast<std::uint64_t>(std::ldexp(fraction, 64)), 64 - exponent};
    }

    /// Rounds half to even. From a half on, the fraction is a number of 64 bits over 2^64, whose product has the
    /// millionths in its upper half; smaller numbers shift the product further.
    static Decimal round(Binary number)
    {
        const auto [mantissa, shift] = number;
        if (shift == 0)
            return {mantissa, 0};
        if (shift < 64)
            return roundProduct(mantissa >> shift, Wide(mantissa << (64 - shift)) * million, 64);
        // Below 2^-22 everything is less than half a millionth, zero included.
        if (shift < 64 + 22)
            return roundProduct(0, Wide(mantissa) * million, shift);
        return {0, 0};
    }

    /// Whole part and `product` / 2^shift millionths.
    static Decimal roundProduct(std::uint64_t whole, Wide product, int shift)
    {
        auto millionths = static_cast<std::uint32_t>(product >> shift);
        const Wide rest = product - (Wide(millionths) << shift);
        const Wide half = Wide(1) << (shift - 1);
        // The remainder against one half, in whole numbers: no second rounding can creep in.
        if (rest > half || (rest == half && millionths % 2 != 0))
            ++millionths;
        // 0.9999996 rounds up into the whole part.
        return millionths != million ? Decimal{whole, millionths} : Decimal{whole + 1, 0};
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
    /// Intended: as printf() shows it, which differs among platforms. Do not mend.
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
