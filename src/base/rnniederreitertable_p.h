// Private to rnniederreitermultirng.imp.
#pragma once

#include <array>
#include <cstdint>

namespace Vn
{

/// The generator matrices of RnNiederreiterMultiRng, and tables made of them at compile time.
///
/// A point is the exclusive or of one row for each set bit of its number. That is linear: the part
/// of a point that comes from one byte of the number does not depend on the other bytes. So a table
/// of 256 partial points for each byte turns up to 32 exclusive ors into 4, and 256 consecutive
/// points differ in the lowest byte's part alone.
///
/// Tests: tests/base/rnquasitest.cpp, against the rows and against points computed elsewhere.
namespace RnNiederreiterTable
{

/// The four coordinates of a point, in units of 2^-31.
using Point = std::array<std::uint32_t, 4>;

/// What each bit of a point's number adds by exclusive or to the four coordinates, in units of
/// 2^-31. The first column is the radical inverse in base 2. Intended: the last row is zero, so
/// that the highest bit of a number has no effect and every coordinate stays below 1; do not mend.
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

/// The partial points of all values of each of the four bytes of a number, the lowest byte first.
/// 16 kilobytes. Each entry is the one with its lowest bit cleared, which comes before it, and that
/// bit's row:
///
///     points[0][6]  =  points[0][4] ^ rows[1]
///     points[3][0]  =  0
struct Bytes
{
    constexpr Bytes()
    {
        for (int byte = 0; byte < 4; ++byte)
            for (unsigned int n = 1; n < 256; ++n)
                for (unsigned int d = 0; d < 4; ++d)
                    points[byte][n][d] = points[byte][n & (n - 1)][d] ^ rows[8 * byte + lowestBit(n)][d];
    }

    /// The number of the lowest bit set; `n` is not 0.
    static constexpr int lowestBit(unsigned int n)
    {
        int bit = 0;
        while (((n >> bit) & 1) == 0)
            ++bit;
        return bit;
    }

    alignas(16) Point points[4][256] = {};  ///< a point is one aligned load
};
inline constexpr Bytes bytes{};

/// The lowest byte's partial points once more, dimension by dimension: a bulk fill reads them in
/// the order in which it writes one coordinate of consecutive points.
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

/// The part of a point that the upper three bytes of its number make. It changes every 256 points.
///
///     upperPart(255)   ->  (0, 0, 0, 0)
///     upperPart(4096)  ->  rows[12]
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
