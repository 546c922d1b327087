#include <base/inusagepages_p.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace Vn::InUsagePages;

TEST(InUsagePages, roffShowsEachTextToTheLetter)
{
    EXPECT_EQ(roffOf("-d"), "\\-d");
    EXPECT_EQ(roffOf("C:\\temp"), "C:\\etemp");
    EXPECT_EQ(roffOf("'red' \"blue\" `^~"), "\\(aqred\\(aq \\(dqblue\\(dq \\(ga\\(ha\\(ti");
    EXPECT_EQ(roffOf("a\x1b[2J\n"), "a\\ex1b[2J\\en") << "a control character stands as text";
    EXPECT_EQ(roffOf("caf\xc3\xa9"), "caf\xc3\xa9");
    EXPECT_EQ(roffOf(""), "");
}

TEST(InUsagePages, aShellReadsAQuotedWordBack)
{
    EXPECT_EQ(quotedForShell("plain"), "'plain'");
    EXPECT_EQ(quotedForShell("it's $(false)\\"), "'it'\\''s $(false)\\'");
    EXPECT_EQ(quotedForShell(""), "''");
}

TEST(InUsagePages, anIdentifierHasLettersDigitsAndUnderscores)
{
    EXPECT_EQ(identifierOf("azAZ09_"), "azAZ09_");
    EXPECT_EQ(identifierOf("my-prog.2 $"), "my_prog_2__");
    EXPECT_EQ(identifierOf("/0:@A[`a{~"), "_0__A__a__") << "the neighbours of the ranges";
}

TEST(InUsagePages, theDayOfABuildIsReadInTheCompilersForm)
{
    const struct
    {
        char const* date;
        char const* expected;
    } table[] = {
        {"Jan  1 2018", "2018-01-01"},
        {"Aug 27 2018", "2018-08-27"},
        {"Dec 31 1999", "1999-12-31"},
        {"Aug 27", ""},
        {"an 27 2018", ""},
        {"Foo 27 2018", ""},
        {"an  27 2018", ""},
        {"Augu27 2018", ""},
        {"Aug 27.2018", ""},
        {"n F 27 2018", ""},
        {"Aug 2x 2018", ""},
        {"Aug x2 2018", ""},
        {"Aug 27 201x", ""},
        {"Aug 27 20181", ""},
        {"", ""},
    };
    for (auto const& row : table)
        EXPECT_EQ(isoDateOf(row.date), row.expected) << row.date;
}

TEST(InUsagePages, aDemandNamesItsWordsBetweenCommasAndOr)
{
    using Words = std::vector<std::string>;
    EXPECT_EQ(wordsOf("bytes, files or suffix"), (Words{"bytes", "files", "suffix"}));
    EXPECT_EQ(wordsOf("red or blue"), (Words{"red", "blue"}));
    EXPECT_EQ(wordsOf("a number of levels"), Words{});
    EXPECT_EQ(wordsOf("all"), Words{"all"});
    EXPECT_EQ(wordsOf("1 to 64, or 0"), Words{}) << "0 is not all of it";
    EXPECT_EQ(wordsOf("a, b, or c"), (Words{"a", "b", "c"}));
    EXPECT_EQ(wordsOf(", a, "), Words{"a"});
    EXPECT_EQ(wordsOf(""), Words{});
}
