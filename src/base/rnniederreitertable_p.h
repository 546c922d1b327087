#pragma once

#include <array>
#include <cstdint>

namespace Vn
{

/// The generator matrices of RnNiederreiterMultiRng and what is made of them. Private to the library.
namespace RnNiederreiterTable
{

using Point = std::array<std::uint32_t, 4>;

/// What each bit of a point's number adds, without carry, to the four coordinates; units of 2^-31.
inline constexpr Point rows[32] = {
    {0x40000000, 0x40000000, 0x60000000, 0x70000000}, {0x20000000, 0x60000000, 0x48000000, 0x62000000},
    {0x10000000, 0x50000000, 0x38000000, 0x46000000}, {0x08000000, 0x78000000, 0x7A000000, 0x1E000000},
    {0x04000000, 0x44000000, 0x5E000000, 0x2C400000}, {0x02000000, 0x66000000, 0x36800000, 0x5AC00000},
    {0x01000000, 0x55000000, 0x65800000, 0x37C00000}, {0x00800000, 0x7F800000, 0x4B200000, 0x7D880000},
    {0x00400000, 0x40400000, 0x3E600000, 0x6B580000}, {0x00200000, 0x60600000, 0x7EC80000, 0x44B80000},
    {0x00100000, 0x50500000, 0x5DB80000, 0x1B310000}, {0x00080000, 0x78780000, 0x315A0000, 0x26230000},
    {0x00040000, 0x44440000, 0x603E0000, 0x5C470000}, {0x00020000, 0x66660000, 0x487E8000, 0x38C62000},
    {0x00010000, 0x55550000, 0x385D8000, 0x71C46000}, {0x00008000, 0x7FFF8000, 0x7A312000, 0x6389E000},
    {0x00004000, 0x40004000, 0x5E606000, 0x471AC400}, {0x00002000, 0x60006000, 0x36C84800, 0x1E7DAC00},
    {0x00001000, 0x50005000, 0x65B83800, 0x2CF27C00}, {0x00000800, 0x78007800, 0x4B5A7A00, 0x5BACD880},
    {0x00000400, 0x44004400, 0x3E3E5E00, 0x3719B580}, {0x00000200, 0x66006600, 0x7EFEB680, 0x7C7A6B80},
    {0x00000100, 0x55005500, 0x5DDDE580, 0x6AF4D310}, {0x00000080, 0x7F807F80, 0x31116B20, 0x45A88230},
    {0x00000040, 0x40404040, 0x60005E60, 0x1B580070}, {0x00000020, 0x60606060, 0x480036C8, 0x26B80062},
    {0x00000010, 0x50505050, 0x380065B8, 0x5D310046}, {0x00000008, 0x78787878, 0x7A004B5A, 0x3823001E},
    {0x00000004, 0x44444444, 0x5E003E3E, 0x7007002C}, {0x00000002, 0x66666666, 0x36807EFE, 0x6206205A},
    {0x00000001, 0x55555555, 0x65805DDD, 0x46046037}, {0x00000000, 0x00000000, 0x00000000, 0x00000000},
};

/// The same for each of the four bytes of a number, all bits of the byte together: four look-ups make a point.
struct Bytes
{
    constexpr Bytes()
    {
        for (int byte = 0; byte < 4; ++byte)
            for (unsigned int n = 1; n < 256; ++n)
                for (unsigned int d = 0; d < 4; ++d)
                    points[byte][n][d] = points[byte][n & (n - 1)][d] ^ rows[8 * byte + lowestBit(n)][d];
    }

    static constexpr int lowestBit(unsigned int n)
    {
        int bit = 0;
        while (((n >> bit) & 1) == 0)
            ++bit;
        return bit;
    }

    alignas(16) Point points[4][256] = {};
};
inline constexpr Bytes bytes{};

/// The lowest byte's, dimension by dimension: 256 points in a row differ from each other in nothing else.
struct LowByte
{
    constexpr LowByte()
    {
        for (unsigned int d = 0; d < 4; ++d)
            for (unsigned int n = 0; n < 256; ++n)
                values[d][n] = bytes.points[0][n][d];
    }

    alignas(16) std::uint32_t values[4][256] = {};
};
inline constexpr LowByte lowByte{};

/// What the upper three bytes make.
constexpr Point upperPart(std::uint32_t n)
{
    Point const& b1 = bytes.points[1][(n >> 8) & 255];
    Point const& b2 = bytes.points[2][(n >> 16) & 255];
    Point const& b3 = bytes.points[3][n >> 24];
    Point point{};
    for (unsigned int d = 0; d < 4; ++d)
        point[d] = b1[d] ^ b2[d] ^ b3[d];
    return point;
}

}  // namespace RnNiederreiterTable
}  // namespace Vn
