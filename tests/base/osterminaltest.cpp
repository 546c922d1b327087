#include <base/osterminal.h>
#include <base/osterminal_p.h>

#include "child.h"

#include <gtest/gtest.h>

#include <iostream>
#include <string>
#include <string_view>

#if !defined(_WIN32)
#    include <fcntl.h>
#    include <stdlib.h>
#    include <unistd.h>
#endif

using Vn::OsTerminal;
using VnTest::Child;

TEST(OsTerminal, controlCharactersAreShownAndNotObeyed)
{
    const struct
    {
        std::string text, shown;
    } table[] = {
        {"", ""},
        {"plain text ~", "plain text ~"},
        {"a\nb\tc\rd", "a\\nb\\tc\\rd"},
        {"\x1b[31mred", "\\x1b[31mred"},
        {std::string("a\0b", 3), "a\\x00b"},
        {"\x01\x1f\x7f", "\\x01\\x1f\\x7f"},
        {"caf\xc3\xa9 \xe2\x82\xac \xf0\x9f\x98\x80", "caf\xc3\xa9 \xe2\x82\xac \xf0\x9f\x98\x80"},
        {"\xc2\x80\xc2\x9b\xc2\x9f\xc2\xa0", "\\x80\\x9b\\x9f\xc2\xa0"},
        {"\x9b"
         "31m",
         "\\x9b31m"},
        {"\xe9t\xe9", "\xe9t\xe9"},
        {"\xe2\x80\xae"
         "abc",
         "\\u202eabc"},
        {"\xe2\x80\xa8\xe2\x81\xa6\xe2\x81\xa9\xe2\x80\x8f", "\\u2028\\u2066\\u2069\\u200f"},
        {"\xd8\x9b\xd8\x9c\xd8\x9d", "\xd8\x9b\\u061c\xd8\x9d"},
        {"\xe2\x80\xa7\xe2\x80\xaf", "\xe2\x80\xa7\xe2\x80\xaf"},
        {"\xe2\x80\x8d\xe2\x80\x8e\xe2\x80\x90", "\xe2\x80\x8d\\u200e\xe2\x80\x90"},
        {"\xe2\x81\xa5\xe2\x81\xaa", "\xe2\x81\xa5\xe2\x81\xaa"},
        {"C:\\new\\table", "C:\\new\\table"},
        // Cut, wrong and overlong sequences.
        {"\xe2\x80", "\xe2\\x80"},
        {"\xc2", "\xc2"},
        {"\xc2\n", "\xc2\\n"},
        {"\xe0\x80\x9b", "\\x1b"},
        {"\xf0\x80\x80\x8a", "\\n"},
        {"\xf8\x80\x80\x80", "\xf8\\x80\\x80\\x80"},
        {"\xff\xfe\xf8\x9f", "\xff\xfe\xf8\\x9f"},
    };
    for (auto const& row : table)
        EXPECT_EQ(OsTerminal::shown(row.text), row.shown);
}

TEST(OsTerminal, aTextEndsWhereItsSizeSays)
{
    // The rest of each character stands behind the end.
    for (std::string const text : {"\xc2\x9b", "\xe2\x80\xae", "\xf0\x9f\x98\x80"}) {
        const std::string_view cut = std::string_view(text).substr(0, 1);
        EXPECT_EQ(OsTerminal::shown(cut), cut);
    }
}

TEST(OsTerminal, noByteOfAControlCharacterIsLeftWhateverTheBytesAre)
{
    // Every pair behind every kind of beginning.
    for (char const* start : {"", "\xc2", "\xe2\x80", "\xf0\x9f", "\xe0"}) {
        for (int first = 0; first < 256; ++first) {
            for (int second = 0; second < 256; second += 3) {
                const std::string shown =
                    OsTerminal::shown(start + std::string{static_cast<char>(first), static_cast<char>(second)});
                for (char byte : shown)
                    ASSERT_TRUE(static_cast<unsigned char>(byte) >= 0x20 && byte != 0x7f) << first << " " << second;
                ASSERT_EQ(OsTerminal::shown(shown), shown) << "what is shown stays as it is";
            }
        }
    }
}

TEST(OsTerminal, theTerminalsColumnsComeFirstThenTheVariable)
{
    EXPECT_EQ(Vn::columnsOf(132, "100"), 132);
    EXPECT_EQ(Vn::columnsOf(0, "100"), 100);
    EXPECT_EQ(Vn::columnsOf(0, "1"), 1);
    for (char const* text :
         {static_cast<char const*>(nullptr), "", "0", "-5", "wide", "70x", " 90", "99999999999", "-", "7 0"})
        EXPECT_EQ(Vn::columnsOf(0, text), 80) << (text != nullptr ? text : "null");
}

VN_CHILD(tellTerminal)
{
    std::cout << OsTerminal::isStandardOutput() << OsTerminal::isStandardError() << " " << OsTerminal::getColumns()
              << "\n";
    return 0;
}

TEST(OsTerminal, aPipeIsNone)
{
    EXPECT_EQ(Child("tellTerminal").without("COLUMNS").run().out, "00 80\n");
    EXPECT_EQ(Child("tellTerminal").with("COLUMNS", "70").run().out, "00 70\n");
}

#if !defined(_WIN32)
/// Tells of both streams by its exit code, with the one of them a terminal whose number it is given.
VN_CHILD(tellOneTerminal)
{
    const int controller = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (controller == -1 || ::grantpt(controller) != 0 || ::unlockpt(controller) != 0)
        return 9;
    const int terminal = ::open(::ptsname(controller), O_RDWR | O_NOCTTY | O_CLOEXEC);
    ::dup2(terminal, std::stoi(argv[1]));
    return OsTerminal::isStandardOutput() + 2 * OsTerminal::isStandardError();
}

TEST(OsTerminal, eachStreamMayBeOneByItself)
{
    EXPECT_EQ(Child("tellOneTerminal").arguments({"1"}).run().exitCode, 1);
    EXPECT_EQ(Child("tellOneTerminal").arguments({"2"}).run().exitCode, 2);
}

TEST(OsTerminal, aTerminalIsOneAndHasItsColumns)
{
    EXPECT_EQ(Child("tellTerminal").with("COLUMNS", "70").runOnTerminal(123).out, "11 123\n");
    EXPECT_EQ(Child("tellTerminal").with("COLUMNS", "70").runOnTerminal(0).out, "11 70\n")
        << "one that doesn't tell";
}
#endif
