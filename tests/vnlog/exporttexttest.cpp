#include <exporttext.h>

#include <gtest/gtest.h>

#include <string>

using namespace vnlog;

TEST(ExportText, tellsAndReplacesWhatIsNotUtf8)
{
    const struct
    {
        char const* what;
        std::string bytes, text;
    } table[] = {
        {"nothing", "", ""},
        {"a zero", std::string("a\0b", 3), std::string("a\0b", 3)},
        {"the longest of each length", "\x7f \u07ff \uffff \U0010ffff", "\x7f \u07ff \uffff \U0010ffff"},
        {"the shortest of each length", "\u0080 \u0800 \U00010000", "\u0080 \u0800 \U00010000"},
        {"around the surrogates", "\ud7ff\ue000", "\ud7ff\ue000"},
        {"a continuation alone", "a\x80", "a\ufffd"},
        {"a longer form of /", "\xc0\xaf", "\ufffd\ufffd"},
        {"a longer form of a zero, three bytes", "\xe0\x80\x80", "\ufffd\ufffd\ufffd"},
        {"a longer form, four bytes", "\xf0\x8f\xbf\xbf", "\ufffd\ufffd\ufffd\ufffd"},
        {"a surrogate", "\xed\xa0\x80", "\ufffd\ufffd\ufffd"},
        {"beyond U+10FFFF", "\xf4\x90\x80\x80", "\ufffd\ufffd\ufffd\ufffd"},
        {"no lead at all", "\xf5\xfe\xff", "\ufffd\ufffd\ufffd"},
        {"half of two", "\xc3", "\ufffd"},
        {"two of three", "\xe2\x82 b", "\ufffd b"},
        {"three of four, then a letter",
         "\xf0\x9f\x8c"
         "b",
         "\ufffd"
         "b"},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(toUtf8(row.bytes), row.text);
        EXPECT_EQ(isUtf8(row.bytes), row.bytes == row.text);
        EXPECT_TRUE(isUtf8(row.text));
    }
}

// RFC 4648, section 10.
TEST(ExportText, base64IsThatOfTheStandard)
{
    const struct
    {
        char const *bytes, *text;
    } table[] = {{"", ""},
                 {"f", "Zg=="},
                 {"fo", "Zm8="},
                 {"foo", "Zm9v"},
                 {"foob", "Zm9vYg=="},
                 {"fooba", "Zm9vYmE="},
                 {"foobar", "Zm9vYmFy"},
                 {"\xfb\xff\xbf", "+/+/"}};
    for (auto const& row : table)
        EXPECT_EQ(toBase64(row.bytes), row.text);
}

TEST(ExportText, timesHaveNineDigitsAndAreInUtc)
{
    const struct
    {
        std::int64_t nanoseconds;
        char const* text;
    } table[] = {
        {0, "1970-01-01T00:00:00.000000000Z"},
        {1, "1970-01-01T00:00:00.000000001Z"},
        {-1, "1969-12-31T23:59:59.999999999Z"},
        {951'782'400'000'000'000, "2000-02-29T00:00:00.000000000Z"},
        {1'795'368'021'001'432'987, "2026-11-22T17:20:21.001432987Z"},
        {INT64_MAX, "2262-04-11T23:47:16.854775807Z"},
        {INT64_MIN, "1677-09-21T00:12:43.145224192Z"},
    };
    for (auto const& row : table)
        EXPECT_EQ(toTimeText(row.nanoseconds), row.text);
}

TEST(ExportText, aTitleIsTheFirstLineInWholeCharacters)
{
    const struct
    {
        char const* text;
        std::size_t most;
        char const* title;
    } table[] = {{"abc", 3, "abc"},
                 {"abcd", 3, "abc..."},
                 {"ab\ncd", 3, "ab..."},
                 {"", 3, ""},
                 {"a\u20ac"
                  "b",
                  3, "a..."},
                 {"a\u20ac", 4, "a\u20ac"},
                 {"\n", 3, "..."}};
    for (auto const& row : table)
        EXPECT_EQ(toTitle(row.text, row.most), row.title);
}
