#include <base/exinternalerror.h>
#include <base/osenv.h>

#include "expectthrow.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

using Vn::OsEnv;
using VnTest::expectThrow;

TEST(OsEnv, whatWasPutIsThere)
{
    OsEnv::putVariable("VNBASE_TEST_A=1");
    EXPECT_STREQ(OsEnv::getVariable("VNBASE_TEST_A"), "1");
    EXPECT_STREQ(std::getenv("VNBASE_TEST_A"), "1");
    OsEnv::putVariable("VNBASE_TEST_A=2=3 ");
    EXPECT_STREQ(OsEnv::getVariable("VNBASE_TEST_A"), "2=3 ");
}

TEST(OsEnv, anUnsetNameIsNull)
{
    EXPECT_EQ(OsEnv::getVariable("VNBASE_TEST_NEVER_SET"), nullptr);
    EXPECT_EQ(OsEnv::getVariable(""), nullptr);
    EXPECT_EQ(OsEnv::getVariable(nullptr), nullptr);
}

TEST(OsEnv, anEmptyValueUnsets)
{
    OsEnv::putVariable("VNBASE_TEST_B=1");
    OsEnv::putVariable("VNBASE_TEST_B=");
    EXPECT_EQ(OsEnv::getVariable("VNBASE_TEST_B"), nullptr);
    OsEnv::putVariable("VNBASE_TEST_B=");
    EXPECT_EQ(OsEnv::getVariable("VNBASE_TEST_B"), nullptr);
}

TEST(OsEnv, theSettingIsCopied)
{
    std::string setting = "VNBASE_TEST_C=before";
    OsEnv::putVariable(setting.c_str());
    setting.replace(14, 6, "behind");
    EXPECT_STREQ(OsEnv::getVariable("VNBASE_TEST_C"), "before");
}

TEST(OsEnv, aRefusalNamesItsSource)
{
    try {
        OsEnv::putVariable("no setting");
        ADD_FAILURE() << "nothing thrown";
    } catch (Vn::ExBase const& failure) {
        EXPECT_STREQ(failure.getFileName(), "src/base/osenv");
    }
}

TEST(OsEnv, whatIsNoSettingIsRefused)
{
    OsEnv::putVariable("VNBASE_TEST_D=1");
    for (char const* setting : {"VNBASE_TEST_D", "=1", "", static_cast<char const*>(nullptr)}) {
        SCOPED_TRACE(setting != nullptr ? setting : "null");
        expectThrow<Vn::ExInternalError, std::runtime_error>([setting] { OsEnv::putVariable(setting); },
                                                             "Could not set environment variable");
    }
    EXPECT_STREQ(OsEnv::getVariable("VNBASE_TEST_D"), "1");
}
