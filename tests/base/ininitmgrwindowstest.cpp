// The environment's texts, in the code page of the process and not of the console.
#include <base/ininitmgr.h>
#include <base/ininitmgr_p.h>

#include "expectchild.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

namespace
{
/// What the C library makes of it; an entry of the environment for a moment.
std::string asGetenvHasIt(wchar_t const* value)
{
    ::_wputenv((L"VN_TEST_WIDE=" + std::wstring(value)).c_str());
    char const* const found = std::getenv("VN_TEST_WIDE");
    const std::string narrow = found != nullptr ? found : "(null)";
    ::_wputenv(L"VN_TEST_WIDE=");
    return narrow;
}
}  // namespace

TEST(InInitMgrWindows, entriesAreThoseThatGetenvHas)
{
    wchar_t const* const value = L"\u00E4\u00DF \u00A3 \u00E9";
    const std::wstring block = L"A=" + std::wstring(value) + L'\0' + L"=C:=C:\\x" + L'\0' + L"B=" + L'\0';
    const std::vector<std::string> expected = {"A=" + asGetenvHasIt(value), "=C:=C:\\x", "B="};
    EXPECT_EQ(Vn::System::entriesOf(block.c_str()), expected);
    EXPECT_TRUE(Vn::System::entriesOf(L"").empty());

    // The console's code page would have shown in this text; else this test tells nothing.
    char console[32] = "";
    ::WideCharToMultiByte(CP_OEMCP, 0, value, -1, console, sizeof console, nullptr, nullptr);
    EXPECT_NE(asGetenvHasIt(value), console) << "code pages " << ::GetACP() << " and " << ::GetOEMCP();
}

VN_CHILD(wideEnvironment)
{
    char const* const value = Vn::InInitMgr::getEnv("VN_TEST_LETTER");
    std::cout << (value != nullptr && std::string(value) == std::getenv("VN_TEST_LETTER")) << " " << value << "\n";
    return 0;
}

TEST(InInitMgrWindows, getEnvIsGetenv)
{
    ASSERT_EQ(::GetACP(), 1252u) << "the bytes below are of that code page";
    const VnTest::ChildRun run = VnTest::Child("wideEnvironment").with("VN_TEST_LETTER", "\xE4\xA3").run();
    EXPECT_EQ(run.out, "1 \xE4\xA3\n");
    EXPECT_EQ(run.exitCode, 0);
}
