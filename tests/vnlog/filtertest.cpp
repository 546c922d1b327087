#include "tempfolder.h"

#include <filter.h>
#include <timetext.h>

#include <gtest/gtest.h>

#include <string>

using namespace vnlog;

namespace
{
constexpr std::int64_t second = 1000000000;
}

TEST(Filter, namesMatchPatternsWithStarsAndQuestionMarks)
{
    const struct
    {
        char const* name;
        char const* pattern;
        bool isLike;
    } table[] = {
        {"Net", "Net", true},
        {"Net", "net", false},
        {"Net", "N?t", true},
        {"Net", "N*", true},
        {"Net", "*", true},
        {"Net", "*t", true},
        {"Net", "*e*", true},
        {"Net", "*x*", false},
        {"Net", "Ne", false},
        {"Net", "Nett", false},
        {"Net", "????", false},
        {"", "*", true},
        {"", "", true},
        {"", "?", false},
        {"aXbXc", "a*Xc", true},
        {"aXbXc", "a*b*d", false},
        {"aaaa", "*a*a*a*a*a*", false},
    };
    for (auto const& row : table)
        EXPECT_EQ(isLike(row.name, row.pattern), row.isLike) << row.name << " " << row.pattern;
}

TEST(Filter, aPatternOfManyStarsTakesNoExponentialTime)
{
    const std::string name(2000, 'a');
    std::string pattern;
    for (int i = 0; i < 200; ++i)
        pattern += "a*";
    // One way or the other it ends; with a search of all ways it would not.
    EXPECT_FALSE(isLike(name, pattern + "b"));
}

TEST(Filter, levelsAreKnownByWordsInAnyCase)
{
    const struct
    {
        char const* word;
        int level;
    } table[] = {{"Internal Error", 0}, {"internal", 0}, {"FATAL", 1},         {"fatal error", 1},
                 {"error", 2},          {"warning", 3},  {"Informational", 4}, {"tracing", 5},
                 {"Profiling", 6},      {"", -1},        {"info", -1},         {"warning error", -1}};
    for (auto const& row : table)
        EXPECT_EQ(parseLevel(row.word), row.level) << row.word;
}

TEST(Filter, timesAreReadInTheirForms)
{
    const Zone zone = Zone::parse("+01:00");
    const std::int64_t day = (1795305600 - 3600) * second;  // 2026-11-22 there
    const struct
    {
        char const* text;
        TimeLimit limit;
    } table[] = {
        {"2026-11-22", {TimeLimit::Date, day}},
        {"2026-11-22 17:18", {TimeLimit::Date, day + 62280 * second}},
        {"2026-11-22T17:18:19.5", {TimeLimit::Date, day + 62299 * second + second / 2}},
        {"17:18", {TimeLimit::TimeOfDay, 62280 * second}},
        {"00:00:00.000000001", {TimeLimit::TimeOfDay, 1}},
        {"+12.5", {TimeLimit::SinceStart, 12500000000}},
        {"+0", {TimeLimit::SinceStart, 0}},
    };
    for (auto const& row : table)
        EXPECT_EQ(parseTime(row.text, zone), row.limit) << row.text;
    for (char const* text :
         {"", "x", "+", "+x", "-5", "24:00", "12:60", "2026-13-01", "2026-02-29", "2026-11-22X17:18", "2026-11-22T",
          "12:30:61", "+1.x", "99999-11-22", "0227-11-22", "2300-11-22"})
        EXPECT_FALSE(parseTime(text, zone)) << text;
}

TEST(TimeText, datesAreCutAndNotRounded)
{
    const struct
    {
        std::int64_t time;
        int digits;
        char const* text;
    } table[] = {
        {0, 6, "1970-01-01 00:00:00.000000"},
        {999999999, 6, "1970-01-01 00:00:00.999999"},
        {1795367876 * second + 1, 9, "2026-11-22 17:17:56.000000001"},
        {1795367876 * second + 999999999, 0, "2026-11-22 17:17:56"},
        {-1, 3, "1969-12-31 23:59:59.999"},
    };
    for (auto const& row : table) {
        TimeText text(Zone(), row.digits);
        std::string shown;
        text.putDate(shown, row.time);
        EXPECT_EQ(shown, row.text);
    }
}

TEST(TimeText, linesOfOneSecondAndOfTheNextHaveTheirOwnText)
{
    TimeText text(Zone(), 1);
    std::string shown;
    for (const std::int64_t time : {std::int64_t{0}, second / 10, second, second / 5})
        text.putDate(shown, time);
    EXPECT_EQ(shown, "1970-01-01 00:00:00.01970-01-01 00:00:00.11970-01-01 00:00:01.01970-01-01 00:00:00.2");
}

TEST(TimeText, secondsStandInAColumn)
{
    const struct
    {
        std::int64_t time;
        bool hasSign;
        char const* text;
    } table[] = {{0, false, "    0.000"},
                 {1500000000, false, "    1.500"},
                 {1500000000, true, "   +1.500"},
                 {-1500000000, true, "   -1.500"},
                 {123456 * second, false, "123456.000"}};
    const TimeText text(Zone(), 3);
    for (auto const& row : table) {
        std::string shown;
        text.putSeconds(shown, row.time, row.hasSign);
        EXPECT_EQ(shown, row.text);
    }
}

TEST(Pattern, aLineOfAMegabyteNeedsNoStack)
{
    const Pattern pattern("^(a|b)*c$", false);
    const std::string text(1000000, 'a');
    EXPECT_FALSE(pattern.isIn(text));
    EXPECT_TRUE(pattern.isIn(text + "c"));
    // Only the given part is looked at.
    EXPECT_TRUE(pattern.isIn(std::string_view("abcd", 3)));
}

TEST(Pattern, caseCountsUnlessItIsIgnored)
{
    EXPECT_FALSE(Pattern("net", false).isIn("no Net"));
    EXPECT_TRUE(Pattern("net", true).isIn("no Net"));
    EXPECT_THROW(Pattern("(", false), std::runtime_error);
}
