#include <base/duplicatestring.h>

#include <gtest/gtest.h>

#include <climits>
#include <memory>
#include <string>

using Vn::duplicateString;

TEST(DuplicateString, copiesIntoANewArray)
{
    char const source[] = "abc";
    const Vn::ArrayPtrRet<char> copy = duplicateString(source);
    EXPECT_STREQ(copy, "abc");
    EXPECT_NE(copy.get(), source);
}

TEST(DuplicateString, nullGivesTheEmptyString)
{
    EXPECT_STREQ(duplicateString(nullptr), "");
    EXPECT_STREQ(duplicateString(nullptr, 5), "");
}

TEST(DuplicateString, copiesAtMostTheLength)
{
    const struct
    {
        unsigned length;
        char const* copy;
    } table[] = {{0, ""}, {1, "a"}, {2, "ab"}, {3, "abc"}, {4, "abc"}, {UINT_MAX, "abc"}};
    for (auto const& row : table) {
        SCOPED_TRACE(row.length);
        EXPECT_STREQ(duplicateString("abc", row.length), row.copy);
    }
}

TEST(DuplicateString, readsNothingBehindTheLength)
{
    const std::unique_ptr<char[]> unterminated(new char[2]{'a', 'b'});  // the address sanitizer watches its end
    EXPECT_STREQ(duplicateString(unterminated.get(), 2), "ab");
}

TEST(DuplicateString, emptyStringIsNotNull)
{
    EXPECT_NE(duplicateString("").get(), nullptr);
    EXPECT_STREQ(duplicateString(""), "");
}
