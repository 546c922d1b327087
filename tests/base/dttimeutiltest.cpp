#include <base/dtex.h>
#include <base/dttimeutil.h>
#include <base/rationalex.h>

#include "expectthrow.h"

#include <gtest/gtest.h>

#include <bit>
#include <climits>
#include <clocale>
#include <cstdint>
#include <cstring>
#include <limits>
#include <locale>
#include <string>

using Vn::DtEx;
using Vn::DtTime;
using Vn::DtTimeIndex;
using Vn::DtTimeUtil;
using Vn::Interval;
using Vn::Rational;
using Vn::RationalEx;
using StringError = Vn::DtEx::DtStringError;

namespace
{
enum class Refusal
{
    None,
    BadRate,
    DenominatorZero,
    String0,
    String1,
    String2,
    String3
};

struct Time
{
    std::int64_t count;
    int numerator, denominator;
};

struct TextRow
{
    char const* text;
    Time expected;
    Refusal refusal;
};

constexpr TextRow textRows[] = {
#include "../reference/texts.inc"
};

struct WideSeconds
{
    std::int64_t count, ceiling;
    std::uint64_t seconds;
};

struct NarrowSeconds
{
    std::int64_t count, ceiling;
    std::uint32_t seconds;
};

struct SecondsRow
{
    std::int64_t count;
    int numerator, denominator;
    std::uint64_t seconds;
    WideSeconds wide;
    std::uint32_t narrowSeconds;
    NarrowSeconds narrow;
};

constexpr SecondsRow secondsRows[] = {
#include "../reference/seconds.inc"
};

std::string written(DtTime const& time)
{
    return DtTimeUtil::getDtStringFromDtTime(time).get();
}

void expectTime(DtTime const& time, std::int64_t count, int numerator, int denominator)
{
    EXPECT_EQ(std::int64_t(time.getCount()), count);
    EXPECT_EQ(time.getRate().getNumerator(), numerator);
    EXPECT_EQ(time.getRate().getDenominator(), denominator);
}

/// What becomes of reading a text.
Refusal refusalOf(char const* text)
{
    try {
        DtTimeUtil::getDtTimeFromDtString(text);
        return Refusal::None;
    } catch (DtEx::BadRate const&) {
        return Refusal::BadRate;
    } catch (RationalEx::ExDenominatorZero const&) {
        return Refusal::DenominatorZero;
    } catch (StringError const& error) {
        return static_cast<Refusal>(static_cast<int>(Refusal::String0) + error.getErrorCode());
    }
}

void expectCounts(Interval<DtTimeIndex> const& counts, std::int64_t lower, std::int64_t upper)
{
    EXPECT_EQ(std::int64_t(counts.getLower()), lower);
    EXPECT_EQ(std::int64_t(counts.getUpper()), upper);
}

/// A number format that shares nothing with the usual one.
class StrangeNumbers : public std::numpunct<char>
{
protected:
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\1"; }
};
}  // namespace

TEST(DtTimeUtil, writesThreeFieldsWithABlankBetween)
{
    EXPECT_EQ(written(DtTime(100, 30000, 1001)), "100 30000 1001");
    EXPECT_EQ(written(DtTime(-5, 1, 1)), "-5 1 1");
    EXPECT_EQ(written(DtTime(0, 25, 1)), "0 25 1");
    EXPECT_EQ(written(DtTime(7, 25, -1)), "7 -25 1");
}

TEST(DtTimeUtil, theLongestTextHas44Characters)
{
    const DtTime longest(INT64_MIN, INT_MIN, INT_MIN);
    EXPECT_EQ(written(longest), "-9223372036854775808 -2147483648 -2147483648");
    EXPECT_EQ(written(longest).size(), 44u);
}

TEST(DtTimeUtil, writtenTextsReadBackExactly)
{
    const DtTime times[] = {DtTime(),
                            DtTime(INT64_MAX, INT_MAX, 1),
                            DtTime(INT64_MIN, -INT_MAX, INT_MAX - 1),
                            DtTime(INT64_MIN, INT_MIN, 1),
                            DtTime(INT64_MIN, INT_MIN, INT_MAX),
                            DtTime(-1, 1, INT_MAX),
                            DtTime(945216000, 30000, 1001)};
    for (DtTime const& time : times) {
        SCOPED_TRACE(written(time));
        const Vn::ArrayPtr<char> text = DtTimeUtil::getDtStringFromDtTime(time);
        expectTime(DtTimeUtil::getDtTimeFromDtString(text), time.getCount(), time.getRate().getNumerator(),
                   time.getRate().getDenominator());
    }
}

TEST(DtTimeUtil, aMostNegativeDenominatorTurnsTheSignOfWhatIsReadBack)
{
    // Written as stored, -1 over -2147483648, and normalised once more when it is read.
    EXPECT_EQ(written(DtTime(5, 1, INT_MIN)), "5 -1 -2147483648");
    expectTime(DtTimeUtil::getDtTimeFromDtString("5 -1 -2147483648"), 5, 1, INT_MIN);
}

TEST(DtTimeUtil, readsWhatTheReferenceReads)
{
    for (TextRow const& row : textRows) {
        SCOPED_TRACE(row.text);
        ASSERT_EQ(refusalOf(row.text), row.refusal);
        if (row.refusal == Refusal::None)
            expectTime(DtTimeUtil::getDtTimeFromDtString(row.text), row.expected.count, row.expected.numerator,
                       row.expected.denominator);
    }
}

TEST(DtTimeUtil, runsOfBlanksPartFields)
{
    expectTime(DtTimeUtil::getDtTimeFromDtString("100 25 1"), 100, 25, 1);
    expectTime(DtTimeUtil::getDtTimeFromDtString("   100    25  1   "), 100, 25, 1);
}

TEST(DtTimeUtil, eachErrorHasItsCodeAndText)
{
    const struct
    {
        char const* text;
        StringError::ErrorCode code;
        char const* reason;
    } table[] = {
        {"100 x 1", StringError::ErrRateNumeratorMalformed, "DtString conversion error: Rate numerator malformed."},
        {"100 99999999999 1", StringError::ErrRateNumeratorOverflow,
         "DtString conversion error: Rate numerator overflow."},
        {"100 25 y", StringError::ErrRateDenominatorMalformed,
         "DtString conversion error: Rate denominator malformed."},
        {"100 25 -99999999999", StringError::ErrRateDenominatorOverflow,
         "DtString conversion error: Rate denominator overflow."},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.text);
        VnTest::expectThrow<StringError, std::logic_error>([&] { DtTimeUtil::getDtTimeFromDtString(row.text); },
                                                           row.reason);
        try {
            DtTimeUtil::getDtTimeFromDtString(row.text);
        } catch (StringError const& error) {
            EXPECT_EQ(error.getErrorCode(), row.code);
            EXPECT_STREQ(error.getFileName(), "src/base/dttimeutil");
        }
    }
}

TEST(DtTimeUtil, errorCodesHaveTexts)
{
    EXPECT_STREQ(StringError::toString(StringError::ErrRateNumeratorMalformed), "Rate numerator malformed.");
    EXPECT_STREQ(StringError::toString(StringError::ErrRateNumeratorOverflow), "Rate numerator overflow.");
    EXPECT_STREQ(StringError::toString(StringError::ErrRateDenominatorMalformed), "Rate denominator malformed.");
    EXPECT_STREQ(StringError::toString(StringError::ErrRateDenominatorOverflow), "Rate denominator overflow.");
    for (int other : {4, -1, 99})
        EXPECT_STREQ(StringError::toString(static_cast<StringError::ErrorCode>(other)), "Unknown error.");
    const StringError unknown("file", 1, static_cast<StringError::ErrorCode>(9));
    EXPECT_STREQ(unknown.what(), "DtString conversion error: Unknown error.");
    EXPECT_EQ(static_cast<int>(unknown.getErrorCode()), 9);
}

TEST(DtTimeUtil, aClonedErrorKeepsItsCode)
{
    const StringError error("file", 1, StringError::ErrRateDenominatorOverflow);
    const std::unique_ptr<Vn::ExBase> clone(error.clone());
    auto const* const copy = dynamic_cast<StringError const*>(clone.get());
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->getErrorCode(), StringError::ErrRateDenominatorOverflow);
}

TEST(DtTimeUtil, wellFormedRatesThatAreNoneAreRefusedAsRates)
{
    VnTest::expectThrow<DtEx::BadRate, std::logic_error>([] { DtTimeUtil::getDtTimeFromDtString("100 0 1"); },
                                                         "Null rate not allowed in DtTime.");
    VnTest::expectThrow<RationalEx::ExDenominatorZero, std::invalid_argument>(
        [] { DtTimeUtil::getDtTimeFromDtString("100 1 0"); }, "Illegal zero denominator.");
}

TEST(DtTimeUtil, ratesAreNormalised)
{
    expectTime(DtTimeUtil::getDtTimeFromDtString("100 -25 -1"), 100, 25, 1);
    expectTime(DtTimeUtil::getDtTimeFromDtString("100 4 6"), 100, 2, 3);
}

TEST(DtTimeUtil, countsStopAtTheLimitsOf64Bits)
{
    const struct
    {
        char const* text;
        std::int64_t expected;
    } table[] = {
        {"9223372036854775799 1 1", 9223372036854775799}, {"9223372036854775806 1 1", INT64_MAX - 1},
        {"9223372036854775807 1 1", INT64_MAX},           {"9223372036854775808 1 1", INT64_MAX},
        {"9223372036854775810 1 1", INT64_MAX},           {"9999999999999999999 1 1", INT64_MAX},
        {"92233720368547758070 1 1", INT64_MAX},          {"18446744073709551617 1 1", INT64_MAX},
        {"-9223372036854775807 1 1", -INT64_MAX},         {"-9223372036854775808 1 1", INT64_MIN},
        {"-9223372036854775809 1 1", INT64_MIN},          {"-92233720368547758080 1 1", INT64_MIN},
        {"-18446744073709551617 1 1", INT64_MIN},         {"+000000000000000000000000000000042 1 1", 42},
        {"-000000000000000000000000000000042 1 1", -42},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.text);
        expectTime(DtTimeUtil::getDtTimeFromDtString(row.text), row.expected, 1, 1);
    }
}

TEST(DtTimeUtil, whiteSpaceOtherThanBlanksBelongsToItsField)
{
    expectTime(DtTimeUtil::getDtTimeFromDtString("\t7 \n25 \v\f\r2"), 7, 25, 2);
    expectTime(DtTimeUtil::getDtTimeFromDtString("7\t8 25 1"), 7, 25, 1);
    expectTime(DtTimeUtil::getDtTimeFromDtString("\t 25 2"), 0, 25, 2);  // a first field without a number
    EXPECT_EQ(refusalOf("7 \t 25 2"), Refusal::String0);
    EXPECT_EQ(refusalOf("7 25 \t"), Refusal::String2);
    EXPECT_EQ(refusalOf("7 +-25 1"), Refusal::String0);
    EXPECT_EQ(refusalOf("7 -+25 1"), Refusal::String0);
    EXPECT_EQ(refusalOf("7 - 25"), Refusal::String0);
}

TEST(DtTimeUtil, nullReadsAsAnEmptyText)
{
    EXPECT_EQ(refusalOf(nullptr), Refusal::String0);
    EXPECT_EQ(refusalOf(""), Refusal::String0);
}

TEST(DtTimeUtil, aCountWithoutANumberIsZero)
{
    expectTime(DtTimeUtil::getDtTimeFromDtString("x 25 1"), 0, 25, 1);
    expectTime(DtTimeUtil::getDtTimeFromDtString("12x 25 1"), 12, 25, 1);
}

TEST(DtTimeUtil, veryLongTextsAreReadToTheirEnd)
{
    const std::string digits(1000000, '9'), blanks(1000000, ' ');
    expectTime(DtTimeUtil::getDtTimeFromDtString((digits + blanks + "25 1").c_str()), INT64_MAX, 25, 1);
    EXPECT_EQ(refusalOf(("1 " + digits + " 1").c_str()), Refusal::String1);
    EXPECT_EQ(refusalOf(("1 1 -" + digits).c_str()), Refusal::String3);
    expectTime(DtTimeUtil::getDtTimeFromDtString(("1 " + std::string(1000000, '0') + "5 1").c_str()), 1, 5, 1);
}

TEST(DtTimeUtil, thePlatformsNumberFormatNeverShows)
{
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new StrangeNumbers));
    const std::string oldNames = std::setlocale(LC_ALL, nullptr);
    // Whichever of these the system has, on top of the facet, which is there everywhere.
    for (char const* name : {"de_DE.UTF-8", "fr_FR.UTF-8", "German_Germany", "de-DE"})
        std::setlocale(LC_ALL, name);
    EXPECT_EQ(written(DtTime(1234567, 30000, 1001)), "1234567 30000 1001");
    expectTime(DtTimeUtil::getDtTimeFromDtString("1234567 30000 1001"), 1234567, 30000, 1001);
    expectTime(DtTimeUtil::getDtTimeFromDtString("1.234.567 30.000 1.001"), 1, 30, 1);
    std::setlocale(LC_ALL, oldNames.c_str());
    std::locale::global(before);
}

TEST(DtTimeUtil, secondsBecomeCountsByTruncation)
{
    expectTime(DtTimeUtil::getDtTimeFromSeconds(Rational(25, 1), 0.99), 24, 25, 1);
    expectTime(DtTimeUtil::getDtTimeFromSeconds(Rational(25, 1), -0.99), -24, 25, 1);
    expectTime(DtTimeUtil::getDtTimeFromSeconds(Rational(25, 1), 0.99f), 24, 25, 1);
    expectTime(DtTimeUtil::getDtTimeFromSeconds(Rational(30000, 1001), 1001.0), 30000, 30000, 1001);
}

TEST(DtTimeUtil, nullRatesAreRefused)
{
    VnTest::expectThrow<DtEx::BadRate, std::logic_error>(
        [] { DtTimeUtil::getDtTimeFromSeconds(Rational(0, 1), 1.0); }, "Null rate not allowed in DtTime.");
    VnTest::expectThrow<DtEx::BadRate, std::logic_error>(
        [] { DtTimeUtil::getDtTimeFromSeconds(Rational(0, 1), 1.0f); }, "Null rate not allowed in DtTime.");
}

TEST(DtTimeUtil, secondsBeyondACountAreTheMostNegativeOne)
{
    const Rational one(1, 1);
    for (double seconds :
         {1e19, -1e19, std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
        SCOPED_TRACE(seconds);
        expectTime(DtTimeUtil::getDtTimeFromSeconds(one, seconds), INT64_MIN, 1, 1);
        expectTime(DtTimeUtil::getDtTimeFromSeconds(one, static_cast<float>(seconds)), INT64_MIN, 1, 1);
    }
}

TEST(DtTimeUtil, countsBecomeSecondsInTheResultsType)
{
    EXPECT_EQ(DtTimeUtil::getSecondsDouble(DtTime(50, 25, 1)), 2.0);
    EXPECT_EQ(DtTimeUtil::getSecondsFloat(DtTime(50, 25, 1)), 2.0f);
    // 2^24 + 1 is no float.
    EXPECT_EQ(DtTimeUtil::getSecondsFloat(DtTime(16777217, 1, 1)), 16777216.0f);
    EXPECT_EQ(DtTimeUtil::getSecondsDouble(DtTime(16777217, 1, 1)), 16777217.0);
}

TEST(DtTimeUtil, inclusiveCountsReachTheUpperEndOnly)
{
    const DtTime frames(999, 25, 1);  // the count isn't read
    expectCounts(DtTimeUtil::getInclusiveDtTimeIndexInterval(frames, Interval<double>(0.5, 1.01)), 12, 26);
    expectCounts(DtTimeUtil::getInclusiveDtTimeIndexInterval(frames, Interval<double>(-0.5, 1.0)), -12, 25);
    expectCounts(DtTimeUtil::getInclusiveDtTimeIndexInterval(frames, Interval<float>(0.5f, 1.01f)), 12, 26);
    expectCounts(DtTimeUtil::getInclusiveDtTimeIndexInterval(frames, Interval<float>(-0.5f, 1.0f)), -12, 25);
    expectCounts(DtTimeUtil::getInclusiveDtTimeIndexInterval(frames, Interval<double>(2.0, -1.01)), 50, -25);
}

TEST(DtTimeUtil, ceilingsOfFloatsBeyond32BitsAreWholeAlready)
{
    const DtTime seconds(0, 1, 1);
    expectCounts(
        DtTimeUtil::getInclusiveDtTimeIndexInterval(seconds, Interval<float>(4294967296.0f, 8589934592.0f)),
        4294967296, 8589934592);
}

TEST(DtTimeUtil, countsBecomeAnIntervalOfSeconds)
{
    const DtTime frames(999, 25, 1);
    Interval<DtTimeIndex> const counts(25, 50), inverted(50, -25);
    EXPECT_EQ(DtTimeUtil::getSecondsIntervalDouble(frames, counts).getLower(), 1.0);
    EXPECT_EQ(DtTimeUtil::getSecondsIntervalDouble(frames, counts).getUpper(), 2.0);
    EXPECT_EQ(DtTimeUtil::getSecondsIntervalFloat(frames, counts).getLower(), 1.0f);
    EXPECT_EQ(DtTimeUtil::getSecondsIntervalFloat(frames, counts).getUpper(), 2.0f);
    EXPECT_EQ(DtTimeUtil::getSecondsIntervalDouble(frames, inverted).getLower(), 2.0);
    EXPECT_EQ(DtTimeUtil::getSecondsIntervalDouble(frames, inverted).getUpper(), -1.0);
}

TEST(DtTimeUtil, secondsGoBothWaysAsInTheReference)
{
    for (SecondsRow const& row : secondsRows) {
        const Rational rate(row.numerator, row.denominator);
        const DtTime time(row.count, rate);
        const double seconds = std::bit_cast<double>(row.seconds);
        const float narrow = std::bit_cast<float>(row.narrowSeconds);
        SCOPED_TRACE(testing::Message() << time << ", " << seconds << " s");
        expectTime(DtTimeUtil::getDtTimeFromSeconds(rate, seconds), row.wide.count, rate.getNumerator(),
                   rate.getDenominator());
        expectTime(DtTimeUtil::getDtTimeFromSeconds(rate, narrow), row.narrow.count, rate.getNumerator(),
                   rate.getDenominator());
        EXPECT_EQ(std::bit_cast<std::uint64_t>(DtTimeUtil::getSecondsDouble(time)), row.wide.seconds);
        EXPECT_EQ(std::bit_cast<std::uint32_t>(DtTimeUtil::getSecondsFloat(time)), row.narrow.seconds);
        expectCounts(DtTimeUtil::getInclusiveDtTimeIndexInterval(time, Interval<double>(seconds)), row.wide.count,
                     row.wide.ceiling);
        expectCounts(DtTimeUtil::getInclusiveDtTimeIndexInterval(time, Interval<float>(narrow)), row.narrow.count,
                     row.narrow.ceiling);
    }
}
