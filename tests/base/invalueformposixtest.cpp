// The form for standard libraries without std::from_chars for `double`, in each tree; its source is part of this program.
#include <base/invalueform_p.h>

#include <gtest/gtest.h>

#include <bit>
#include <cerrno>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace
{
/// All that a reading tells. The bits, as -0 is 0 and not-a-number is nothing.
struct Reading
{
    std::size_t size;
    std::errc error;
    std::uint64_t bits;

    bool operator==(Reading const&) const = default;
};

void PrintTo(Reading const& reading, std::ostream* stream)
{
    *stream << reading.size << " characters, error " << static_cast<int>(reading.error) << ", bits "
            << reading.bits;
}

template <class Float>
std::uint64_t bitsOf(Float value)
{
    if constexpr (sizeof(Float) == 4)
        return std::bit_cast<std::uint32_t>(std::isnan(value) ? std::abs(value) : value);
    else
        return std::bit_cast<std::uint64_t>(std::isnan(value) ? std::abs(value) : value);
}

constexpr double untouched = 77;

template <class Float>
Reading readByCText(std::string const& text)
{
    Float value = untouched;
    const auto [rest, error] = Vn::numberFromCText(text.c_str(), value);
    return {static_cast<std::size_t>(rest - text.c_str()), error, bitsOf(value)};
}

constexpr std::errc good{};
constexpr std::errc invalid = std::errc::invalid_argument;
constexpr std::errc beyond = std::errc::result_out_of_range;

const struct
{
    char const* text;
    std::size_t size;
    std::errc error;
    double value;
} numbers[] = {
    {"", 0, invalid, untouched},
    {"abc", 0, invalid, untouched},
    {" 1", 0, invalid, untouched},
    {"\t1", 0, invalid, untouched},
    {"+1", 0, invalid, untouched},
    {"-", 0, invalid, untouched},
    {"-+1", 0, invalid, untouched},
    {"- 1", 0, invalid, untouched},
    {"--1", 0, invalid, untouched},
    {".", 0, invalid, untouched},
    {"-.", 0, invalid, untouched},
    {"e5", 0, invalid, untouched},
    {"0", 1, good, 0.0},
    {"-0", 2, good, -0.0},
    {"1", 1, good, 1.0},
    {"-1.5x", 4, good, -1.5},
    {"1,5", 1, good, 1.0},
    {".5", 2, good, 0.5},
    {"5.", 2, good, 5.0},
    {"1e", 1, good, 1.0},
    {"1e+", 1, good, 1.0},
    {"1e2", 3, good, 100.0},
    {"1E-2", 4, good, 0.01},
    {"0x10", 1, good, 0.0},
    {"-0X10", 2, good, -0.0},
    {"00x10", 2, good, 0.0},
    {"0.5x10", 3, good, 0.5},
    {"inf", 3, good, std::numeric_limits<double>::infinity()},
    {"-INFinityx", 9, good, -std::numeric_limits<double>::infinity()},
    {"infini", 3, good, std::numeric_limits<double>::infinity()},
    {"in", 0, invalid, untouched},
    {"nan", 3, good, std::numeric_limits<double>::quiet_NaN()},
    {"1e400", 5, beyond, untouched},
    {"-1e400", 6, beyond, untouched},
    {"1e-400", 6, beyond, untouched},
    {"9e-400", 6, beyond, untouched},
    {"-0.09E-400", 10, beyond, untouched},
    {"0E-400", 6, good, 0.0},
    {"-0.001e-400x", 11, beyond, untouched},
    {"0e-400", 6, good, 0.0},
    {"0.000e400", 9, good, 0.0},
    {"4.9406564584124654e-324", 23, good, std::numeric_limits<double>::denorm_min()},
    {"1e-310", 6, good, 1e-310},
    {"1.7976931348623157e308", 22, good, std::numeric_limits<double>::max()},
    // Half-way between two numbers of 53 bits, and the smallest bit more.
    {"9007199254740993", 16, good, 9007199254740992.0},
    {"9007199254740993.00000000000000000000000000000000000001", 55, good, 9007199254740994.0},
};
}  // namespace

TEST(NumberFromCText, readsWhatFromCharsReads)
{
    for (auto const& row : numbers)
        EXPECT_EQ(readByCText<double>(row.text), (Reading{row.size, row.error, bitsOf(row.value)})) << row.text;
}

TEST(NumberFromCText, roundsOnceToTheTypesOwnBits)
{
    // Through a double this would be the even neighbour.
    EXPECT_EQ(readByCText<float>("1.00000017881393432617187499"),
              (Reading{28, good, bitsOf(1.00000011920928955f)}));
    EXPECT_EQ(readByCText<float>("1e39"), (Reading{4, beyond, bitsOf(static_cast<float>(untouched))}));
    EXPECT_EQ(readByCText<float>("1e-39"), (Reading{5, good, bitsOf(1e-39f)}));
    EXPECT_EQ(readByCText<float>("1e-46"), (Reading{5, beyond, bitsOf(static_cast<float>(untouched))}));
}

TEST(NumberFromCText, leavesErrnoAsItWas)
{
    for (char const* text : {"1e400", "1e-400", "1e-310", "1", "x"}) {
        errno = ENOTTY;
        readByCText<double>(text);
        EXPECT_EQ(errno, ENOTTY) << text;
    }
}

#ifdef __cpp_lib_to_chars
namespace
{
template <class Float>
Reading readByFromChars(std::string const& text)
{
    Float value = untouched;
    const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return {static_cast<std::size_t>(rest - text.data()), error, bitsOf(value)};
}
}  // namespace

TEST(NumberFromCText, saysTheSameAsFromCharsOfWhateverTheCharacters)
{
    std::vector<std::string> texts;
    for (auto const& row : numbers)
        texts.push_back(row.text);
    std::mt19937_64 random(5);
    const auto below = [&](std::size_t count) { return static_cast<std::size_t>(random() % count); };
    for (int i = 0; i < 20000; ++i) {
        std::string text;
        for (std::size_t size = below(9); text.size() < size;)
            text += "0019.-+eExinfa"[below(14)];
        texts.push_back(text);
        // A number of the type, and its neighbourhood.
        text = std::to_string(random()) + "." + std::to_string(random()) + "e" +
               std::to_string(static_cast<int>(below(700)) - 360);
        texts.push_back(text);
    }
    for (std::string const& text : texts) {
        ASSERT_EQ(readByCText<double>(text), readByFromChars<double>(text)) << text;
        ASSERT_EQ(readByCText<float>(text), readByFromChars<float>(text)) << text;
    }
}
#endif
