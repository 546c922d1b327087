#include <base/osendian.h>

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstdint>
#include <limits>

using Vn::OsEndian;

namespace
{
/// The rule from another side: byte i becomes byte size-1-i.
template <class T>
T mirrored(T value)
{
    auto bytes = std::bit_cast<std::array<unsigned char, sizeof(T)>>(value);
    std::array<unsigned char, sizeof(T)> result{};
    for (std::size_t i = 0; i < sizeof(T); ++i)
        result[sizeof(T) - 1 - i] = bytes[i];
    return std::bit_cast<T>(result);
}

template <class T>
void expectMirrored(T value)
{
    EXPECT_EQ(OsEndian::invert(value), mirrored(value));
    EXPECT_EQ(OsEndian::invert(OsEndian::invert(value)), value);
    EXPECT_EQ(OsEndian::invertIf(true, value), mirrored(value));
    EXPECT_EQ(OsEndian::invertIf(false, value), value);
}

template <class T>
void expectMirroredIntegers()
{
    for (T value : {T(0), T(1), T(0x12), T(-1), std::numeric_limits<T>::min(), std::numeric_limits<T>::max()})
        expectMirrored(value);
}
}  // namespace

TEST(OsEndian, tellsTheOrderOfThisMachine)
{
    EXPECT_EQ(OsEndian::isBigEndian(), std::endian::native == std::endian::big);
}

TEST(OsEndian, reversesTheBytesOfEachKindAndTwiceGivesItBack)
{
    expectMirroredIntegers<signed char>();
    expectMirroredIntegers<unsigned char>();
    expectMirroredIntegers<short>();
    expectMirroredIntegers<unsigned short>();
    expectMirroredIntegers<int>();
    expectMirroredIntegers<unsigned int>();
    expectMirroredIntegers<long>();
    expectMirroredIntegers<unsigned long>();
    expectMirroredIntegers<long long>();
    expectMirroredIntegers<unsigned long long>();
    expectMirroredIntegers<std::int64_t>();
    expectMirroredIntegers<std::uint64_t>();
    for (float value : {1.0F, -2.5F, 0.1F})
        expectMirrored(value);
    for (double value : {1.0, -2.5, 0.1})
        expectMirrored(value);
}

TEST(OsEndian, knownValues)
{
    EXPECT_EQ(OsEndian::invert(static_cast<unsigned short>(0x1234)), 0x3412);
    EXPECT_EQ(OsEndian::invert(static_cast<unsigned char>(0x12)), 0x12);
    EXPECT_EQ(OsEndian::invert(0x12345678U), 0x78563412U);
    EXPECT_EQ(OsEndian::invert(std::uint64_t(0x0123456789ABCDEF)), 0xEFCDAB8967452301U);
    EXPECT_EQ(OsEndian::invert(1LL), 0x0100000000000000LL);
    EXPECT_EQ(OsEndian::invert(1ULL), 0x0100000000000000ULL);
    EXPECT_EQ(OsEndian::invert(1L), sizeof(long) == 8 ? 0x0100000000000000LL : 0x01000000LL);
    EXPECT_EQ(OsEndian::invert(1UL), sizeof(long) == 8 ? 0x0100000000000000ULL : 0x01000000ULL);
    EXPECT_EQ(OsEndian::invertIf(true, 1LL), 0x0100000000000000LL);
    EXPECT_EQ(OsEndian::invert(static_cast<short>(0x00FF)), static_cast<short>(0xFF00));
    // 1.0 is 3F800000: reversed a denormal number, not minus one or an inverse.
    EXPECT_EQ(OsEndian::invert(1.0F), std::bit_cast<float>(0x0000803FU));
    EXPECT_EQ(OsEndian::invert(1.0), std::bit_cast<double>(std::uint64_t(0x000000000000F03F)));
}
