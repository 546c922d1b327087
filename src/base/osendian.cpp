// All overloads go through one template that copies the value's bytes into a buffer, reverses them there and copies
// them back. Compilers make one instruction of it (bswap) where the type has 2, 4 or 8 bytes. Shifts and masks would
// do for integers, but not for floating-point values, whose bit patterns must come through unchanged, a signalling
// NaN included.
//
// The overloads are written out one by one because they are the exported interface: a template in the header would
// leave no symbols in the library, and programs that were linked against an earlier version need them. `long` and
// `long long` are distinct types on every platform, whatever their sizes, so both have an overload and no call is
// ambiguous.
#include <base/osendian.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>

namespace Vn
{
namespace
{
/// The value with its bytes in reverse order. Every access is a copy of bytes, which the language allows for any
/// type.
template <class T>
T reversed(T value)
{
    unsigned char bytes[sizeof(T)];
    std::memcpy(bytes, &value, sizeof bytes);
    std::reverse(std::begin(bytes), std::end(bytes));
    std::memcpy(&value, bytes, sizeof bytes);
    return value;
}

/// Without the condition the value isn't touched, so a signalling NaN stays one if the caller's registers keep it.
template <class T>
T reversedIf(bool condition, T value)
{
    return condition ? reversed(value) : value;
}
}  // namespace

bool OsEndian::isBigEndian()
{
    // Read through bytes and not through a cast pointer, which would break the aliasing rules.
    const std::uint32_t one = 1;
    unsigned char bytes[sizeof one];
    std::memcpy(bytes, &one, sizeof one);
    return bytes[sizeof one - 1] == 1;  // the least significant byte comes last
}

// invert(): one byte each. The value comes back as it is; the overloads exist so that generic code needs no
// exception.

signed char OsEndian::invert(signed char value)
{
    return reversed(value);
}

unsigned char OsEndian::invert(unsigned char value)
{
    return reversed(value);
}

// Two, four and eight bytes. The floating-point overloads return the reversed pattern in a register of their type,
// which may quiet a signalling NaN on some processors.

short OsEndian::invert(short value)
{
    return reversed(value);
}

unsigned short OsEndian::invert(unsigned short value)
{
    return reversed(value);
}

int OsEndian::invert(int value)
{
    return reversed(value);
}

unsigned int OsEndian::invert(unsigned int value)
{
    return reversed(value);
}

float OsEndian::invert(float value)
{
    return reversed(value);
}

// Eight bytes on Linux, four on Windows.

long OsEndian::invert(long value)
{
    return reversed(value);
}

unsigned long OsEndian::invert(unsigned long value)
{
    return reversed(value);
}

long long OsEndian::invert(long long value)
{
    return reversed(value);
}

unsigned long long OsEndian::invert(unsigned long long value)
{
    return reversed(value);
}

double OsEndian::invert(double value)
{
    return reversed(value);
}

// invertIf(): for data that may be in either order; the condition is the result of comparing that order with ours.

// One byte each: the condition makes no difference.

signed char OsEndian::invertIf(bool condition, signed char value)
{
    return reversedIf(condition, value);
}

unsigned char OsEndian::invertIf(bool condition, unsigned char value)
{
    return reversedIf(condition, value);
}

// Two and four bytes.

short OsEndian::invertIf(bool condition, short value)
{
    return reversedIf(condition, value);
}

unsigned short OsEndian::invertIf(bool condition, unsigned short value)
{
    return reversedIf(condition, value);
}

int OsEndian::invertIf(bool condition, int value)
{
    return reversedIf(condition, value);
}

unsigned int OsEndian::invertIf(bool condition, unsigned int value)
{
    return reversedIf(condition, value);
}

float OsEndian::invertIf(bool condition, float value)
{
    return reversedIf(condition, value);
}

// Eight bytes, and four for `long` on Windows.

long OsEndian::invertIf(bool condition, long value)
{
    return reversedIf(condition, value);
}

unsigned long OsEndian::invertIf(bool condition, unsigned long value)
{
    return reversedIf(condition, value);
}

long long OsEndian::invertIf(bool condition, long long value)
{
    return reversedIf(condition, value);
}

unsigned long long OsEndian::invertIf(bool condition, unsigned long long value)
{
    return reversedIf(condition, value);
}

double OsEndian::invertIf(bool condition, double value)
{
    return reversedIf(condition, value);
}

}  // namespace Vn
