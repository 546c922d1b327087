#include <base/exsyserror.h>
#include <base/exsyserror_p.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <string>
#include <typeinfo>

#if defined(_WIN32)
#    include <windows.h>
#endif

namespace
{
/// Leaves `code` as the system's last error, whichever that is on this platform.
void setSystemError(int code)
{
#if defined(_WIN32)
    ::SetLastError(static_cast<DWORD>(code));
#else
    errno = code;
#endif
}
}  // namespace

TEST(ExSysErrorANSI, holdsErrnoAndItsText)
{
    errno = ENOENT;
    const Vn::ExSysErrorANSI error("file.cpp", 5);
    EXPECT_EQ(error.getError(), ENOENT);
    EXPECT_STREQ(error.getReason(), std::strerror(ENOENT));
    EXPECT_STREQ(error.getFileName(), "file.cpp");
    EXPECT_EQ(error.getLineNo(), 5);
}

TEST(ExSysErrorANSI, isCaughtAsExBaseAndAsRuntimeErrorWithOneMessage)
{
    const auto fail = [] {
        errno = EACCES;
        throw Vn::ExSysErrorANSI("file.cpp", 5);
    };
    try {
        fail();
        FAIL();
    } catch (std::runtime_error const& caught) {
        EXPECT_STREQ(caught.what(), std::strerror(EACCES));
        EXPECT_STREQ(caught.std::runtime_error::what(), "");
    }
    try {
        fail();
        FAIL();
    } catch (Vn::ExBase const& caught) {
        EXPECT_STREQ(caught.getReason(), std::strerror(EACCES));
    }
    try {
        fail();
        FAIL();
    } catch (Vn::ExSysError const& caught) {
        EXPECT_STREQ(caught.what(), caught.getReason());
    }
}

TEST(ExSysErrorANSI, cloneIsOfTheConcreteTypeAndKeepsTheNumber)
{
    errno = ENOENT;
    const Vn::ExSysErrorANSI error("file.cpp", 5);
    const std::unique_ptr<Vn::ExBase> clone(error.clone());
    Vn::ExBase const& copied = *clone;
    ASSERT_EQ(typeid(copied), typeid(Vn::ExSysErrorANSI));
    EXPECT_EQ(dynamic_cast<Vn::ExSysErrorANSI&>(*clone).getError(), ENOENT);
    EXPECT_STREQ(clone->getReason(), error.getReason());
}

TEST(ExSysErrorANSI, copyAndAssignmentCarryEverything)
{
    errno = ENOENT;
    Vn::ExSysErrorANSI first("first.cpp", 1);
    errno = EACCES;
    const Vn::ExSysErrorANSI second("second.cpp", 2);
    const Vn::ExSysErrorANSI copy(second);
    EXPECT_EQ(copy.getError(), EACCES);
    first = second;
    EXPECT_EQ(first.getError(), EACCES);
    EXPECT_STREQ(first.what(), std::strerror(EACCES));
    EXPECT_STREQ(first.getFileName(), "second.cpp");
}

TEST(ExSysErrorWindows, holdsTheSystemsLastError)
{
    setSystemError(2);
    const Vn::ExSysErrorWindows error("file.cpp", 6);
    EXPECT_EQ(error.getErrorCode(), 2);
    EXPECT_STRNE(error.getReason(), "");
    EXPECT_STREQ(error.what(), error.getReason());
}

TEST(ExSysErrorWindows, cloneIsOfTheConcreteTypeAndKeepsTheNumber)
{
    setSystemError(5);
    const Vn::ExSysErrorWindows error("file.cpp", 6);
    const std::unique_ptr<Vn::ExBase> clone(error.clone());
    Vn::ExBase const& copied = *clone;
    ASSERT_EQ(typeid(copied), typeid(Vn::ExSysErrorWindows));
    EXPECT_EQ(dynamic_cast<Vn::ExSysErrorWindows&>(*clone).getErrorCode(), 5);
    EXPECT_STREQ(clone->getReason(), error.getReason());
}

#if defined(_WIN32)
TEST(ExSysErrorWindows, textIsThatOfFormatMessageLessItsLineEnd)
{
    for (DWORD code : {2u, 3u, 5u, 6u, 183u}) {
        SCOPED_TRACE(code);
        char text[1024] = "";
        const DWORD length =
            ::FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, code, 0, text, sizeof text, nullptr);
        ASSERT_GT(length, 2u);
        std::string expected(text, length);
        while (!expected.empty() && (expected.back() == '\r' || expected.back() == '\n'))
            expected.pop_back();
        ::SetLastError(code);
        EXPECT_EQ(Vn::ExSysErrorWindows("file.cpp", 1).getReason(), expected);
    }
}

TEST(ExSysErrorWindows, numberWithoutATextHasAnEmptyReason)
{
    ::SetLastError(0x2FFFFFFF);
    const Vn::ExSysErrorWindows error("file.cpp", 1);
    EXPECT_EQ(error.getErrorCode(), 0x2FFFFFFF);
    EXPECT_STREQ(error.getReason(), "");
}
#else
TEST(ExSysErrorWindows, holdsErrnoAndItsTextHere)
{
    errno = EXDEV;
    const Vn::ExSysErrorWindows error("file.cpp", 1);
    EXPECT_EQ(error.getErrorCode(), EXDEV);
    EXPECT_STREQ(error.getReason(), std::strerror(EXDEV));
}
#endif

TEST(ExSysErrorWindows, lineEndIsCutOffTheSystemsText)
{
    const struct
    {
        char const* what;
        char const* given;
        char const* kept;
    } table[] = {
        {"carriage return and line feed", "Text.\r\n", "Text."},
        {"line feed alone", "Text.\n", "Text."},
        {"carriage return alone", "Text.\r", "Text."},
        {"line feed and carriage return", "Text.\n\r", "Text."},
        {"line feed before the last character", "Text\n.", "Text"},
        {"carriage return before the last character", "Text\r.", "Text"},
        {"two line feeds", "Text\n\n", "Text"},
        {"three line feeds", "Text\n\n\n", "Text\n"},
        {"line feed further in front", "Te\nxt", "Te\nxt"},
        {"none", "Text.", "Text."},
        {"nothing", "", ""},
        {"one line feed", "\n", ""},
        {"one character", "T", "T"},
        {"nothing but the line end", "\r\n", ""},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.what);
        char text[16];
        std::strcpy(text, row.given);
        Vn::System::cutLineEnd(text);
        EXPECT_STREQ(text, row.kept);
    }
}
