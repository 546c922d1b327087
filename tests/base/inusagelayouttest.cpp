#include <base/inusagelayout_p.h>

#include <gtest/gtest.h>

#include <sstream>
#include <string>

using namespace Vn::InUsageLayout;

TEST(InUsageLayout, anOptionsDescriptionHasTheOptionAndItsValueInFrontOrNot)
{
    const struct
    {
        char letter;
        char const* placeholder;
        char const* description;
        char const* left;
        char const* right;
    } table[] = {
        {'n', "TEXT", "-n NAME: whom to greet", "-n NAME", "whom to greet"},
        {'n', "TEXT", "-n NAME     whom to greet", "-n NAME", "whom to greet"},
        {'n', "TEXT", "NAME: whom to greet", "-n NAME", "whom to greet"},
        {'n', "TEXT", "NAME  whom to greet", "-n NAME", "whom to greet"},
        {'n', "TEXT", "whom to greet", "-n TEXT", "whom to greet"},
        {'n', "TEXT", "-n: whom to greet", "-n TEXT", "whom to greet"},
        {'n', "TEXT", "", "-n TEXT", ""},
        {'n', "TEXT", "-n", "-n TEXT", ""},
        {'n', "TEXT", "-n NAME", "-n NAME", ""},
        {'n', "TEXT", "NAME to be greeted", "-n TEXT", "NAME to be greeted"},
        {'n', "TEXT", "A: one letter is no word", "-n TEXT", "A: one letter is no word"},
        {'n', "TEXT", "Name: whom to greet", "-n TEXT", "Name: whom to greet"},
        {'s', "TEXT", "-s WIDTHxHEIGHT: size", "-s TEXT", "WIDTHxHEIGHT: size"},
        {'s', "TEXT", "-s HOST/PORT: where", "-s HOST/PORT", "where"},
        {'v', "", "-v: tell more", "-v", "tell more"},
        {'v', "", "-v           tell more", "-v", "tell more"},
        {'v', "", "tell more", "-v", "tell more"},
        {'v', "", "-vv is another word", "-v", "-vv is another word"},
        {'v', "", "   ", "-v", ""},
    };
    for (auto const& row : table) {
        const Row made = describeOption(row.letter, row.placeholder, row.description);
        EXPECT_EQ(made.left, row.left) << row.description;
        EXPECT_EQ(made.right, row.right) << row.description;
    }
}

TEST(InUsageLayout, lengthsAreCharacters)
{
    EXPECT_EQ(lengthOf(""), 0u);
    EXPECT_EQ(lengthOf("abc"), 3u);
    EXPECT_EQ(lengthOf("\xc3\xa9t\xc3\xa9"), 3u);
}

TEST(InUsageLayout, rowsStandInTwoColumnsAndLongLinesGoOnInTheSecond)
{
    std::ostringstream stream;
    const std::vector<Row> rows = {{"-a", "one two three four five"}, {"-bb X", "six"}, {"--word", ""}};
    printRows(stream, rows, leftWidthOf(rows, 24), 24);
    EXPECT_EQ(stream.str(), "  -a       one two three\n"
                            "           four five\n"
                            "  -bb X    six\n"
                            "  --word\n");
}

TEST(InUsageLayout, aFirstColumnOfMoreThanHalfALineGetsALineOfItsOwn)
{
    std::ostringstream stream;
    const std::vector<Row> rows = {{"-a", "one"}, {"--a-very-long-word", "two three four"}};
    printRows(stream, rows, leftWidthOf(rows, 24), 24);
    EXPECT_EQ(stream.str(), "  -a        one\n"
                            "  --a-very-long-word\n"
                            "            two three\n"
                            "            four\n");
}

TEST(InUsageLayout, aWordLongerThanALineStaysWhole)
{
    std::ostringstream stream;
    printText(stream, "a 0123456789012345678901234 b", 20);
    EXPECT_EQ(stream.str(), "a\n0123456789012345678901234\nb\n");
}

TEST(InUsageLayout, textKeepsItsLineEndsAndIndentedLinesAreRows)
{
    std::ostringstream stream;
    printText(stream, "Messages go to these files:\n  events   all but times\n  prof     times\n\nThat is all.",
              22);
    EXPECT_EQ(stream.str(), "Messages go to these\n"
                            "files:\n"
                            "  events   all but\n"
                            "           times\n"
                            "  prof     times\n"
                            "\n"
                            "That is all.\n");
}

TEST(InUsageLayout, noLineIsLongerThanTheWidthWhileItsWordsAreNot)
{
    const std::string text = "The quick brown fox jumps over the lazy dog, again and again and again.";
    for (std::size_t width = 8; width < 90; ++width) {
        std::ostringstream stream;
        printText(stream, text, width);
        std::istringstream lines(stream.str());
        std::string words;
        for (std::string line; std::getline(lines, line);) {
            EXPECT_LE(line.size(), width);
            words += (words.empty() ? "" : " ") + line;
        }
        EXPECT_EQ(words, text);
    }
}
