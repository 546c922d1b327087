// What lgtext.h, lgduration.h, lgvalues.h and lgstreamed.h add to messages: the text of each type, on both ways of VN_LOG.
#include <base/lgduration.h>
#include <base/lgstreamed.h>
#include <base/lgtext.h>
#include <base/lgvalues.h>

#include "loggertest.h"

#include "testpackage.h"

#include <base/dttime.h>
#include <base/duplicatestring.h>
#include <base/exinternalerror.h>
#include <base/inex.h>
#include <base/interval.h>
#include <base/osfilepath.h>
#include <base/rational.h>
#include <base/rationalex.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <iomanip>
#include <iostream>
#include <limits>
#include <locale>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

using namespace std::chrono_literals;
using namespace std::string_literals;
using Vn::LgStandardOutput;
using Vn::LgStream;
using VnTest::LoggerTest;

namespace
{
constexpr std::size_t cells = 32768;

std::string taken(LgStream& stream)
{
    static char text[cells];
    stream >> text;
    return text;
}

/// The value in a message.
template <class Value>
std::string queued(Value const& value)
{
    LgStream stream;
    stream << '<' << value << '>' << Vn::ends;
    return taken(stream);
}

/// The value in a message while the logger isn't active.
template <class Value>
std::string printed(Value const& value)
{
    std::ostringstream stream;
    LgStandardOutput output(stream);
    output << '<' << value << '>';
    return stream.str();
}

template <class Value>
void expectText(Value const& value, std::string const& text)
{
    SCOPED_TRACE(text);
    EXPECT_EQ(queued(value), '<' + text + '>');
    EXPECT_EQ(printed(value), '<' + text + '>');
}

/// What a new stream has of the value.
template <class Value>
std::string streamText(Value const& value)
{
    std::ostringstream stream;
    stream << value;
    return stream.str();
}

std::string addressText(void const* address)
{
    char text[32];
    std::snprintf(text, sizeof text, "%p", const_cast<void*>(address));
    return text;
}

void function() {}
void carefulFunction(int) noexcept {}

/// A room of `room` characters behind "<".
void leave(LgStream& stream, std::size_t room)
{
    stream << '<' << std::string(cells - 2 - room, 'f');
    ASSERT_EQ(stream.getNumCharacters(), room);
}

struct Colour
{
    int red, green, blue;
};

std::ostream& operator<<(std::ostream& stream, Colour const& colour)
{
    return stream << '#' << std::hex << std::setfill('0') << std::setw(2) << colour.red << std::setw(2)
                  << colour.green << std::setw(2) << colour.blue;
}

struct Repeated
{
    std::size_t count;
    char character;
};

std::ostream& operator<<(std::ostream& stream, Repeated const& repeated)
{
    for (std::size_t i = 0; i < repeated.count; ++i)
        stream.put(repeated.character);
    return stream;
}
}  // namespace

TEST(LgText, textsComeOutAsTheyAre)
{
    expectText("text"s, "text");
    expectText(std::string_view("text and more").substr(0, 4), "text");
    expectText(""s, "");
    expectText(std::string_view(), "");
    expectText(std::string_view("\xC3\xA9"), "\xC3\xA9");
    expectText("\xFF\xC3 broken \x80"s, "\xFF\xC3 broken \x80");
    expectText("two\nlines"s, "two\nlines");
    std::string changing = "changing";
    expectText(changing, "changing");
}

TEST(LgText, whatConvertsToATextIsOne)
{
    struct Name
    {
        operator std::string_view() const { return "converted"; }
    };
    expectText(Name(), "converted");
}

TEST(LgText, utf8TextsComeOutAsBytes)
{
    expectText(u8"gr\u00FCn", "gr\xC3\xBCn");
    char8_t const* const text = u8"gr\u00FCn";
    expectText(text, "gr\xC3\xBCn");
    expectText(static_cast<char8_t const*>(nullptr), "");
    expectText(std::u8string(u8"gr\u00FCn"), "gr\xC3\xBCn");
    expectText(std::u8string_view(text, 2), "gr");
    expectText(std::u8string_view(), "");
}

TEST(LgText, zeroBytesAreShownAndEndNoMessage)
{
    expectText("half\0whole"s, "half\\0whole");
    expectText("\0"s, "\\0");
    expectText("\0\0"s, "\\0\\0");
    expectText("\0first and last\0"s, "\\0first and last\\0");
    expectText(std::u8string(3, u8'\0'), "\\0\\0\\0");
}

TEST(LgText, anEmptyTextIsAMessage)
{
    LgStream stream;
    stream << std::string_view();
    EXPECT_EQ(stream.getOutputFlags(), unsigned(LgStream::textWritten));
}

TEST(LgText, nullTextsAreEmpty)
{
    expectText(static_cast<char const*>(nullptr), "");
    expectText(static_cast<char*>(nullptr), "");
    expectText(Vn::ArrayPtr<char>(), "");
}

TEST(LgText, theStandardOutputGoesOnBehindANullText)
{
    std::ostringstream stream;
    LgStandardOutput(stream) << static_cast<char const*>(nullptr) << "behind";
    EXPECT_EQ(stream.str(), "behind");
}

TEST(LgText, ownedTextsAreTextsOnTheStandardOutputToo)
{
    const Vn::ArrayPtr<char> owned = Vn::duplicateString("owned");
    expectText(owned, "owned");
    std::ostringstream stream;
    LgStandardOutput(stream) << Vn::duplicateString("result");
    EXPECT_EQ(stream.str(), "result");
}

TEST(LgText, numbersOf64BitsHaveAllTheirDigits)
{
    expectText(std::numeric_limits<long long>::min(), "-9223372036854775808");
    expectText(std::numeric_limits<long long>::max(), "9223372036854775807");
    expectText(std::numeric_limits<unsigned long long>::max(), "18446744073709551615");
    expectText(0LL, "0");
    expectText(0ULL, "0");
    expectText(-1LL, "-1");
    // The limits of a long of 32 bits, and one beyond.
    expectText(-2147483648LL, "-2147483648");
    expectText(-2147483649LL, "-2147483649");
    expectText(2147483648LL, "2147483648");
    expectText(4294967295ULL, "4294967295");
    expectText(4294967296ULL, "4294967296");
    expectText(Vn::DtTimeIndex(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808");
}

TEST(LgText, pointersAreAddresses)
{
    int object = 0;
    int volatile changing = 0;
    void (*const call)() = function;
    void (*const careful)(int) noexcept = carefulFunction;
    EXPECT_EQ(queued(&object), '<' + addressText(&object) + '>');
    EXPECT_EQ(queued(static_cast<int const*>(&object)), '<' + addressText(&object) + '>');
    EXPECT_EQ(queued(&changing), '<' + addressText(const_cast<int*>(&changing)) + '>');
    EXPECT_EQ(queued(call), '<' + addressText(reinterpret_cast<void const*>(call)) + '>');
    EXPECT_EQ(queued(careful), '<' + addressText(reinterpret_cast<void const*>(careful)) + '>');
    LgStream stream;
    stream << function << Vn::ends;
    EXPECT_EQ(taken(stream), addressText(reinterpret_cast<void const*>(call)));

    EXPECT_EQ(printed(&object), '<' + streamText(static_cast<void const*>(&object)) + '>');
    EXPECT_EQ(printed(&changing), '<' + streamText(static_cast<void const*>(const_cast<int*>(&changing))) + '>');
    EXPECT_EQ(printed(call), '<' + streamText(reinterpret_cast<void const*>(call)) + '>');
    EXPECT_EQ(printed(careful), '<' + streamText(reinterpret_cast<void const*>(careful)) + '>');
    expectText(nullptr, "nullptr");
}

#if !defined(_WIN32)
TEST(LgText, addressesAreHexadecimal)
{
    expectText(reinterpret_cast<void const*>(0x1234ABCD), "0x1234abcd");
    expectText(reinterpret_cast<int volatile*>(0x1234ABCD), "0x1234abcd");
}
#endif

TEST(LgText, exceptionsSayWhatTheyAre)
{
    expectText(std::runtime_error("no such cue"), "no such cue");
    expectText(std::logic_error(""), "");
    expectText(std::bad_alloc(), std::bad_alloc().what());
    const Vn::ExInternalError both("src/base/x", 1, "count > 0");
    expectText(both, both.what());
    expectText(static_cast<std::exception const&>(both), both.what());
    expectText(static_cast<Vn::ExBase const&>(both), both.what());
    EXPECT_NE(queued(both).find("count > 0"), std::string::npos);
    const Vn::RationalEx::ExDenominatorZero family("src/base/rational", 1);
    expectText(family, "Illegal zero denominator.");
    expectText(static_cast<Vn::RationalEx const&>(family), "Illegal zero denominator.");
}

TEST(LgText, aTextThatDoesNotFitIsRefusedAsAWhole)
{
    const struct
    {
        char const* what;
        std::size_t room;
        std::string text, expected;
        bool isLost;
    } table[] = {
        {"fits to the last cell", 5, "abcde"s, "abcde", false},
        {"one too long", 5, "abcdef"s, "#", true},
        {"empty, no room", 0, ""s, "", true},
        {"no room for the mark", 0, "a"s, "", true},
        {"shown zero fits", 5, "abc\0"s, "abc\\0", false},
        {"shown zero doesn't fit", 5, "abcd\0"s, "#", true},
        {"shown zero in no room", 0, "\0"s, "", true},
        {"longer than any ring", 5, std::string(100000, 'x'), "#", true},
        {"longer than any ring, zeros", 5, std::string(100000, '\0'), "#", true},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.what);
        LgStream stream;
        leave(stream, row.room);
        stream << row.text << Vn::ends;
        EXPECT_EQ(taken(stream).substr(cells - 1 - row.room), row.expected);
        stream << "next" << Vn::ends;
        EXPECT_EQ(taken(stream), "next");
        LgStream again;
        leave(again, row.room);
        again << row.text;
        EXPECT_EQ(again.hasOverflowed(), row.isLost);
    }
}

TEST(LgText, theLongestTextFillsTheRing)
{
    LgStream stream;
    const std::string longest(cells - 1, 'x');
    stream << longest << Vn::ends;
    EXPECT_EQ(taken(stream), longest);
    LgStream other;
    other << longest + 'x' << Vn::ends;
    EXPECT_EQ(taken(other), "#");
}

TEST(LgText, zeroBytesAreShownWhereTheRingWraps)
{
    for (std::size_t cell = cells - 8; cell < cells; ++cell) {
        SCOPED_TRACE(cell);
        LgStream stream;
        stream << std::string(cell - 1, 'm') << Vn::ends;
        taken(stream);
        stream << "ab\0cd\0ef"s << Vn::ends;
        EXPECT_EQ(taken(stream), "ab\\0cd\\0ef");
    }
}

TEST(LgText, valuesOfSeveralPartsAreRefusedAsAWhole)
{
    const auto withRoom = [](std::size_t room, auto const& value) {
        LgStream stream;
        leave(stream, room);
        stream << value << Vn::ends;
        return taken(stream).substr(cells - 1 - room);
    };
    EXPECT_EQ(withRoom(17, Vn::DtTime(100, 25, 1)), "(100 @ (25/1=25))");
    EXPECT_EQ(withRoom(16, Vn::DtTime(100, 25, 1)), "#");
    EXPECT_EQ(withRoom(8, Vn::Interval<double>(0.5, 3)), "[0.5, 3]");
    EXPECT_EQ(withRoom(7, Vn::Interval<double>(0.5, 3)), "#");
    EXPECT_EQ(withRoom(4, 250ms), "#");
    EXPECT_EQ(withRoom(6, Vn::streamed(Colour{1, 2, 3})), "#");
    EXPECT_EQ(withRoom(7, Vn::streamed(Colour{1, 2, 3})), "#010203");
    EXPECT_EQ(withRoom(19, std::numeric_limits<long long>::max()), "9223372036854775807");
    EXPECT_EQ(withRoom(18, std::numeric_limits<long long>::max()), "#");
}

TEST(LgText, durationsBearTheirUnit)
{
    using std::chrono::duration;
    expectText(250ms, "250ms");
    expectText(duration<double>(1.5), "1.5s");
    expectText(-90min, "-90min");
    expectText(7us, "7us");
    expectText(0ns, "0ns");
    expectText(2h, "2h");
    expectText(3s, "3s");
    expectText(std::chrono::days(4), "4d");
    expectText(std::chrono::weeks(2), "2[604800]s");
    expectText(duration<int, std::ratio<1, 30>>(5), "5[1/30]s");
    expectText(duration<int, std::ratio<2, 60>>(5), "5[1/30]s");
    expectText(duration<int, std::ratio<1001, 30000>>(-5), "-5[1001/30000]s");
    expectText(duration<long, std::atto>(1), "1as");
    expectText(duration<long, std::femto>(1), "1fs");
    expectText(duration<long, std::pico>(1), "1ps");
    expectText(duration<long, std::centi>(1), "1cs");
    expectText(duration<long, std::deci>(1), "1ds");
    expectText(duration<long, std::deca>(1), "1das");
    expectText(duration<long, std::hecto>(1), "1hs");
    expectText(duration<long, std::kilo>(1), "1ks");
    expectText(duration<long, std::mega>(1), "1Ms");
    expectText(duration<long, std::giga>(1), "1Gs");
    expectText(duration<long, std::tera>(1), "1Ts");
    expectText(duration<long, std::peta>(1), "1Ps");
    expectText(duration<long, std::exa>(1), "1Es");
}

TEST(LgText, durationsHaveNumbersOfAnyType)
{
    using std::chrono::duration;
    expectText(duration<char>('A'), "65s");
    expectText(duration<unsigned char>(200), "200s");
    expectText(duration<float>(0.25f), "0.25s");
    expectText(duration<long double, std::milli>(1e6L), "1e+06ms");
    expectText(duration<double>(1234567.0), "1.23457e+06s");
    expectText(duration<double>(-std::numeric_limits<double>::infinity()), "-infs");
    expectText(std::chrono::nanoseconds::min(), "-9223372036854775808ns");
    expectText(std::chrono::nanoseconds::max(), "9223372036854775807ns");
    expectText(duration<unsigned long long>::max(), "18446744073709551615s");
    constexpr std::intmax_t largest = std::numeric_limits<std::intmax_t>::max();
    expectText(duration<long long, std::ratio<largest, largest - 1>>::min(),
               "-9223372036854775808[9223372036854775807/9223372036854775806]s");
}

TEST(LgText, theLibrarysValuesAreWrittenAsToANewStream)
{
    const auto expect = [](auto const& value, std::string const& text) {
        expectText(value, text);
        EXPECT_EQ(streamText(value), text);
    };
    expect(Vn::Rational(30000, 1001), "(30000/1001=29.97)");
    expect(Vn::Rational(25, 1), "(25/1=25)");
    expect(Vn::Rational(-1, 3), "(-1/3=-0.333333)");
    expect(Vn::Rational(-2147483647 - 1, 2), "(-2147483648/2=-1.07374e+09)");
    expect(Vn::Rational(1, -2147483647 - 1), "(-1/-2147483648=4.65661e-10)");
    expect(Vn::DtTime(100, 25, 1), "(100 @ (25/1=25))");
    expect(Vn::DtTime(std::numeric_limits<std::int64_t>::min(), -2147483647 - 1, -2147483647 - 1),
           "(-9223372036854775808 @ (-2147483648/-2147483648=1))");
    expect(Vn::Interval<float>(0.5f, 3), "[0.5, 3]");
    expect(Vn::Interval<double>(2, -1e300), "[2, -1e+300]");
    expect(Vn::Interval<double>(std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()),
           "[nan, inf]");
    expect(Vn::Interval<Vn::DtTimeIndex>(-5, 12), "[-5, 12]");
    expect(Vn::Interval<int>(7), "[7, 7]");
    expect(Vn::OsFilePath("a/b.exr"), "a/b.exr");
    expect(Vn::OsFilePath(), "");
}

TEST(LgText, aStreamChoosesTheDigitsOfFractionsAndIntervals)
{
    std::ostringstream stream;
    stream << std::setprecision(3) << Vn::Rational(30000, 1001) << ' ' << std::fixed
           << Vn::Interval<double>(0.5, 3);
    EXPECT_EQ(stream.str(), "(30000/1001=30) [0.500, 3.000]");
}

TEST(LgText, whateverAStreamTakesIsStreamed)
{
    expectText(Vn::streamed(Colour{255, 0, 16}), "#ff0010");
    expectText(Vn::streamed(Vn::DtTime(100, 25, 1)), "(100 @ (25/1=25))");
    expectText(Vn::streamed(2.5), "2.5");
    expectText(Vn::streamed(true), "1");
    expectText(Vn::streamed("text"), "text");
    expectText(Vn::streamed(Repeated{0, 'x'}), "");
    expectText(Vn::streamed(Repeated{2, '\0'}), "\\0\\0");
    const std::error_code code = std::make_error_code(std::errc::no_such_file_or_directory);
    expectText(Vn::streamed(code), streamText(code));
}

TEST(LgText, streamedTextsMayHaveAnyLength)
{
    for (const std::size_t count : {511u, 512u, 513u, 1024u, 1025u, 5000u, 32765u}) {
        SCOPED_TRACE(count);
        EXPECT_EQ(queued(Vn::streamed(Repeated{count, 'x'})), '<' + std::string(count, 'x') + '>');
        EXPECT_EQ(queued(Vn::streamed(std::string(count, 'x'))), '<' + std::string(count, 'x') + '>');
    }
    EXPECT_EQ(queued(Vn::streamed(Repeated{32768, 'x'})), "<#>");
}

TEST(LgText, oneStreamedValueLeavesNoFormatToTheNext)
{
    LgStream stream;
    stream << Vn::streamed(Colour{255, 0, 16}) << ' ' << Vn::streamed(255) << Vn::ends;
    EXPECT_EQ(taken(stream), "#ff0010 255");
}

TEST(LgText, noLocaleOfTheProgramIsFollowed)
{
    class Comma : public std::numpunct<char>
    {
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Comma));
    EXPECT_EQ(queued(Vn::streamed(1234567.5)), "<1.23457e+06>");
    EXPECT_EQ(queued(Vn::streamed(1234567)), "<1234567>");
    EXPECT_EQ(queued(1234567LL), "<1234567>");
    EXPECT_EQ(queued(Vn::Rational(30000, 1001)), "<(30000/1001=29.97)>");
    EXPECT_EQ(queued(Vn::Interval<double>(0.5, 1234)), "<[0.5, 1234]>");
    EXPECT_EQ(queued(std::chrono::duration<double>(1.5)), "<1.5s>");
    std::locale::global(before);
}

namespace
{
/// As programs have them: with an operator of their own for either side.
struct Point
{
    int x, y;
};

LgStream& operator<<(LgStream& stream, Point const& point)
{
    return stream << "(" << point.x << ", " << point.y << ")";
}

std::ostream& operator<<(std::ostream& stream, Point const& point)
{
    return stream << "(" << point.x << ", " << point.y << ")";
}

// Of the standard library's types; only this namespace's own code finds them.
LgStream& operator<<(LgStream& stream, std::vector<int> const& numbers)
{
    return stream << numbers.size() << " numbers";
}

std::ostream& operator<<(std::ostream& stream, std::vector<int> const& numbers)
{
    return stream << numbers.size() << " numbers";
}

struct Settings
{
    static const int onlyDeclared = 5;  // without a definition: to take its address doesn't link
    enum Kind
    {
        first = 7
    };
    unsigned narrow : 3;
};

Vn::LgQueue* getTextQueue()
{
    static Vn::LgQueue& queue = *new Vn::LgQueue(0x77);
    return &queue;
}

std::string loggedText()
{
    Vn::LgQueue& queue = *getTextQueue();
    EXPECT_FALSE(queue.isEmpty());
    queue.removeEntry();
    return taken(queue.getStream());
}

class LgTextMessages : public LoggerTest
{
protected:
    /// Both texts of a message: on the standard output, and in a queue.
    template <class Site>
    static void expectMessage(Site const& site, std::string const& text)
    {
        SCOPED_TRACE(text);
        Vn::LgLog::setLoggerActivation(false);
        testing::internal::CaptureStdout();
        site();
        EXPECT_EQ(testing::internal::GetCapturedStdout(), text + '\n');
        Vn::LgLog::setQueueFunction(getTextQueue);
        Vn::LgLog::setLoggerActivation(true);
        site();
        EXPECT_EQ(loggedText(), text);
    }
};
}  // namespace

// Not in Vn, and without a using-directive for it.
namespace elsewhere
{
namespace
{
[[maybe_unused]] int operator<<(Colour const&, Colour const&)  // hides all operators of the namespaces around
{
    return 0;
}

void logMany(Vn::LgMinorGroup const& group)
{
    const std::string name = "left";
    const long long retries = -3;
    const std::runtime_error failure("no such cue");
    VN_LOG(group, Vn::LgTypes::Warning, "lost " << name << " after " << retries << " tries: " << failure);
}

void logFew(Vn::LgMinorGroup const& group)
{
    const std::chrono::milliseconds taken(250);
    VN_LOG(group, Vn::LgTypes::Warning,
           taken << ' ' << std::string_view("text") << ' ' << u8"text" << ' ' << nullptr);
}

void logValues(Vn::LgMinorGroup const& group)
{
    const Vn::DtTime position(100, 25, 1);
    const Vn::OsFilePath path("left.exr");
    VN_LOG(group, Vn::LgTypes::Warning, path << " at " << position << " in " << Vn::Interval<double>(0, 2.5));
}

void logStreamed(Vn::LgMinorGroup const& group)
{
    const std::error_code error;
    VN_LOG(group, Vn::LgTypes::Warning, "no picture for " << Vn::streamed(error));
}

void logSizes(Vn::LgMinorGroup const& group)
{
    const std::size_t size = std::numeric_limits<std::size_t>::max();
    const std::int64_t offset = std::numeric_limits<std::int64_t>::min();
    const std::atomic<int> shared = 4;
    VN_LOG(group, Vn::LgTypes::Warning, size << ' ' << offset << ' ' << shared);
}
}  // namespace
}  // namespace elsewhere

TEST_F(LgTextMessages, areTheSameOnBothWaysFromAnyNamespace)
{
    start();
    const Vn::LgMinorGroup group(Vn::LgMajorGroup::getInstanceForName("Base"), "Test");
    expectMessage([&group] { elsewhere::logMany(group); }, "Test lost left after -3 tries: no such cue");
    expectMessage([&group] { elsewhere::logFew(group); }, "Test 250ms text text nullptr");
    expectMessage([&group] { elsewhere::logValues(group); }, "Test left.exr at (100 @ (25/1=25)) in [0, 2.5]");
    expectMessage([&group] { elsewhere::logStreamed(group); }, "Test no picture for system:0");
    static_assert(sizeof(std::size_t) == 8);
    expectMessage([&group] { elsewhere::logSizes(group); }, "Test 18446744073709551615 -9223372036854775808 4");
}

TEST_F(LgTextMessages, takeWhatSitesHaveWrittenSoFar)
{
    start();
    const Vn::LgMinorGroup group(Vn::LgMajorGroup::getInstanceForName("Base"), "Test");
    const Settings settings{5};
    const std::vector<int> numbers(3);
    const Point point{1, 2};
    char changing[] = "array";
    expectMessage([&] { VN_LOG(group, Vn::LgTypes::Warning, changing << ' ' << 'c' << ' ' << 7u << ' ' << 5L); },
                  "Test array c 7 5");
    expectMessage(
        [&] {
            VN_LOG(group, Vn::LgTypes::Warning,
                   Settings::onlyDeclared << ' ' << settings.narrow << ' ' << Settings::first);
        },
        "Test 5 5 7");
    expectMessage([&] { VN_LOG(group, Vn::LgTypes::Warning, "at " << point << ", " << 3); }, "Test at (1, 2), 3");
    expectMessage([&] { VN_LOG(group, Vn::LgTypes::Warning, "has " << numbers << ", " << 3); },
                  "Test has 3 numbers, 3");
}

TEST_F(LgTextMessages, arriveInTheLogAsOneLineEach)
{
    start();
    auto* const queue = new Vn::LgQueue(1);
    Vn::LgLog::getRegistry()->registerQueue(queue);
    static Vn::LgQueue* current;
    current = queue;
    Vn::LgLog::setQueueFunction([]() -> Vn::LgQueue* { return current; });
    Vn::LgLog::setLoggerActivation(true);
    const Vn::LgMinorGroup group(Vn::LgMajorGroup::getInstanceForName("Base"), "Test");
    VN_LOG(group, Vn::LgTypes::Warning,
           "a zero: "
               << "half\0whole"s);
    VN_LOG(group, Vn::LgTypes::Warning, ""s);
    VN_LOG(group, Vn::LgTypes::Warning, std::string(40000, '\0') << '.');
    VN_LOG(group, Vn::LgTypes::Warning, "the next");
    Vn::LgReader().flushAll();
    Vn::LgLog::getRegistry()->deregisterQueue(queue);
    delete queue;
    std::vector<std::string> texts;
    for (std::string const& line : messages())
        texts.push_back(VnTest::LogLine::parse(line) ? VnTest::LogLine::parse(line)->text : "malformed: " + line);
    EXPECT_EQ(texts, (std::vector<std::string>{"Test a zero: half\\0whole", "Test ", "Test #.", "Test the next"}));
}

namespace
{
template <class T>
concept CanBePrinted = requires(LgStandardOutput& output, T value)
{
    output << value;
};
}  // namespace

TEST(LgText, textsOfWideCharactersDoNotCompile)
{
    EXPECT_FALSE(CanBePrinted<wchar_t const*>);
    EXPECT_FALSE(CanBePrinted<char16_t const*>);
    EXPECT_FALSE(CanBePrinted<char32_t const*>);
    EXPECT_TRUE(CanBePrinted<char8_t const*>);
}
