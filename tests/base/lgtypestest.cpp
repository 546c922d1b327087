#include <base/lgtypes.h>

#include <base/exinternalerror.h>

#include "expectchild.h"
#include "expectthrow.h"

#include <gtest/gtest.h>

#include <cstring>
#include <iomanip>
#include <iostream>
#include <sstream>
#include <string>

using Vn::ExInternalError;
using Vn::LgEx;
using Vn::LgMajorGroup;
using Vn::LgMinorGroup;
using Vn::LgTypes;
using VnTest::expectOutput;
using VnTest::expectThrow;

namespace
{
/// The registry for a test, with the threshold that a program starts with.
class LgMajorGroupTest : public testing::Test
{
protected:
    LgMajorGroupTest() { LgMajorGroup::initialize(nullptr); }

    ~LgMajorGroupTest() override
    {
        LgMajorGroup::finalize();
        LgMajorGroup::setDefaultThreshold(LgTypes::Warning);
    }

    static LgMajorGroup& group(char const* name) { return LgMajorGroup::getInstanceForName(name); }

    static std::string printed()
    {
        std::ostringstream stream;
        LgMajorGroup::printAll(stream);
        return stream.str();
    }

    /// What parse() tells on the standard output stream.
    static std::string parsed(char const* spec)
    {
        testing::internal::CaptureStdout();
        LgMajorGroup::parse(spec);
        return testing::internal::GetCapturedStdout();
    }
};

constexpr char title[] = "Major Groups:\n";
}  // namespace

TEST(LgTypes, wordsStandForTheLevelsAndBack)
{
    char const* const words[] = {"Internal Error", "Fatal Error", "Error",    "Warning",
                                 "Informational",  "Tracing",     "Profiling"};
    for (int i = 0; i < 7; ++i) {
        const auto level = static_cast<LgTypes::Level>(i);
        EXPECT_STREQ(LgTypes::levelToString(level), words[i]);
        EXPECT_EQ(LgTypes::stringToLevel(words[i]), level);
    }
}

TEST(LgTypes, valuesThatAreNoLevelHaveNoWordAndNoMask)
{
    for (const int value : {-2147483647 - 1, -1, 7, 8, 2147483647}) {
        EXPECT_STREQ(LgTypes::levelToString(static_cast<LgTypes::Level>(value)), "");
        EXPECT_EQ(LgMajorGroup::getLevelMask(static_cast<LgTypes::Level>(value)), 0u);
    }
}

TEST(LgTypes, otherWordsAreRefused)
{
    const struct
    {
        char const* text;
        char const* reason;
    } table[] = {
        {"Nonsense", "Invalid level string specified: Nonsense"},
        {"warning", "Invalid level string specified: warning"},
        {"Warning ", "Invalid level string specified: Warning "},
        {"InternalError", "Invalid level string specified: InternalError"},
        {"", "Invalid level string specified: "},
        {nullptr, "Invalid level string specified: "},
    };
    for (auto const& row : table)
        expectThrow<LgEx::InvalidLevelString, std::runtime_error>([&row] { LgTypes::stringToLevel(row.text); },
                                                                  row.reason);
}

TEST(LgTypes, theStandardPartOfARefusalIsEmpty)
{
    const LgEx::InvalidLevelString failure("src/base/x", 12, "Nonsense");
    EXPECT_STREQ(failure.std::runtime_error::what(), "");
    EXPECT_STREQ(failure.what(), "Invalid level string specified: Nonsense");
    EXPECT_STREQ(failure.getFileName(), "src/base/x");
}

TEST(LgTypes, refusalOfALongWordIsCut)
{
    const std::string word(2000, 'x');
    const std::string reason = "Invalid level string specified: " + word;
    expectThrow<LgEx::InvalidLevelString, std::runtime_error>([&word] { LgTypes::stringToLevel(word.c_str()); },
                                                              reason.substr(0, 1023).c_str());
}

TEST_F(LgMajorGroupTest, aNewGroupEnablesTheLevelsUpToWarning)
{
    LgMajorGroup const& fresh = group("fresh");
    EXPECT_EQ(fresh.getLogLevels(), 0xF0u);
    const LgMinorGroup minor(fresh, "word");
    const bool expected[] = {true, true, true, true, false, false, false};
    for (int i = 0; i < 7; ++i)
        EXPECT_EQ(minor.isLevelEnabled(static_cast<LgTypes::Level>(i)), expected[i]) << i;
    EXPECT_STREQ(minor.getName(), "word");
}

TEST_F(LgMajorGroupTest, masksAreCumulativeButForProfiling)
{
    const std::uint32_t masks[] = {0x80, 0xC0, 0xE0, 0xF0, 0xF8, 0xFC, 0x02};
    for (int i = 0; i < 7; ++i)
        EXPECT_EQ(LgMajorGroup::getLevelMask(static_cast<LgTypes::Level>(i)), masks[i]);
}

TEST_F(LgMajorGroupTest, thresholdOfNewGroupsIsNeverBelowFatalError)
{
    LgMajorGroup::setDefaultThreshold(LgTypes::InternalError);
    EXPECT_EQ(LgMajorGroup::getDefaultThreshold(), LgTypes::FatalError);
    EXPECT_EQ(group("a").getLogLevels(), 0xC0u);
    LgMajorGroup::setDefaultThreshold(LgTypes::Profiling);
    EXPECT_EQ(LgMajorGroup::getDefaultThreshold(), LgTypes::Profiling);
    EXPECT_EQ(group("b").getLogLevels(), 0x02u);
    EXPECT_EQ(group("a").getLogLevels(), 0xC0u);  // made before
    LgMajorGroup::setDefaultThreshold(static_cast<LgTypes::Level>(99));
    EXPECT_EQ(LgMajorGroup::getDefaultThreshold(), LgTypes::Profiling);
}

TEST_F(LgMajorGroupTest, thresholdKeepsProfilingUnlessItIsReplaced)
{
    const struct
    {
        char const* what;
        std::uint32_t before;  ///< 0x02 or none
        LgTypes::Level level;
        bool replace;
        std::uint32_t after;
    } table[] = {
        {"kept", 0x02, LgTypes::Tracing, false, 0xFE},
        {"replaced", 0x02, LgTypes::Tracing, true, 0xFC},
        {"none to keep", 0, LgTypes::Informational, false, 0xF8},
        {"none to replace", 0, LgTypes::Informational, true, 0xF8},
        {"not below fatal", 0, LgTypes::InternalError, true, 0xC0},
        {"not below fatal, kept", 0x02, LgTypes::InternalError, false, 0xC2},
        {"profiling is added", 0, LgTypes::Profiling, false, 0xF2},
        {"whatever the flag", 0, LgTypes::Profiling, true, 0xF2},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.what);
        LgMajorGroup fresh;
        if (row.before != 0)
            fresh.setLogThreshold(LgTypes::Profiling, false);
        fresh.setLogThreshold(row.level, row.replace);
        EXPECT_EQ(fresh.getLogLevels(), row.after);
    }
}

TEST_F(LgMajorGroupTest, oneNameIsOneGroupForAllMinorGroups)
{
    std::string name = "shared";
    LgMajorGroup& first = group(name.c_str());
    name = "other!";  // the registry has a copy
    LgMajorGroup& second = group("shared");
    EXPECT_EQ(&first, &second);
    const LgMinorGroup one(first, "one"), two(second, "two");
    EXPECT_FALSE(one.isLevelEnabled(LgTypes::Tracing));
    second.setLogThreshold(LgTypes::Tracing, false);
    EXPECT_TRUE(one.isLevelEnabled(LgTypes::Tracing));
    EXPECT_TRUE(two.isLevelEnabled(LgTypes::Tracing));
    EXPECT_EQ(&group(nullptr), &group(""));
}

TEST_F(LgMajorGroupTest, referencesStayWhileGroupsAreAdded)
{
    LgMajorGroup const* const first = &group("m");
    for (int i = 0; i < 1000; ++i)
        group(std::to_string(i).c_str());
    EXPECT_EQ(&group("m"), first);
}

TEST_F(LgMajorGroupTest, initialisingAgainKeepsTheGroups)
{
    LgMajorGroup const* const first = &group("kept");
    LgMajorGroup::initialize("kept=Tracing");
    EXPECT_EQ(&group("kept"), first);
    EXPECT_EQ(first->getLogLevels(), 0xFCu);
}

TEST_F(LgMajorGroupTest, pairsAreAppliedInTurn)
{
    EXPECT_EQ(parsed("Database=Warning,UI=Informational,Radiosity=Profiling"), "");
    EXPECT_EQ(group("Database").getLogLevels(), 0xF0u);
    EXPECT_EQ(group("UI").getLogLevels(), 0xF8u);
    EXPECT_EQ(group("Radiosity").getLogLevels(), 0xF2u);
    EXPECT_EQ(parsed("A=Profiling,A=Warning,B=Warning,B=Profiling"), "");
    EXPECT_EQ(group("A").getLogLevels(), 0xF2u);
    EXPECT_EQ(group("B").getLogLevels(), 0xF2u);
    EXPECT_EQ(parsed("C=Internal Error,D=Fatal Error"), "");
    EXPECT_EQ(group("C").getLogLevels(), 0xC0u);
}

TEST_F(LgMajorGroupTest, anUnknownWordIsToldAndItsGroupNotMade)
{
    EXPECT_EQ(parsed("A=Warning,B=Nonsense,C=Tracing"), "Invalid level string specified: Nonsense\n");
    EXPECT_EQ(printed(), std::string(title) + "                       A Tracing\n"
                                              "                       C Tracing\n");
    EXPECT_EQ(group("C").getLogLevels(), 0xFCu);
}

TEST_F(LgMajorGroupTest, oddSpecificationsHarmNobody)
{
    const struct
    {
        char const* spec;
        char const* told;
        char const* groups;  ///< behind the title
    } table[] = {
        {"", "", ""},
        {nullptr, "", ""},
        {"===", "", ""},
        {"N", "Invalid level string specified: \n", ""},
        {"N=", "Invalid level string specified: \n", ""},
        {"N=,O=Warning", "Invalid level string specified: \n", "                       O Tracing\n"},
        {"==P=Warning", "", "                       P Tracing\n"},
        {",Q=Warning", "", "                      ,Q Tracing\n"},
        {"R=Warning,", "", "                       R Tracing\n"},
        {"S=Warning=Error", "Invalid level string specified: Warning=Error\n", ""},
        {"T,U=Warning", "", "                     T,U Tracing\n"},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.spec != nullptr ? row.spec : "null");
        LgMajorGroup::finalize();
        LgMajorGroup::initialize(nullptr);
        EXPECT_EQ(parsed(row.spec), row.told);
        EXPECT_EQ(printed(), std::string(title) + row.groups);
    }
}

TEST_F(LgMajorGroupTest, printsTracingForWhateverIsEnabled)
{
    group("b");
    group("a much longer name than the field").setLogThreshold(LgTypes::FatalError, true);
    group("c").setLogThreshold(LgTypes::Profiling, false);
    LgMajorGroup::setDefaultThreshold(LgTypes::Profiling);
    group("d");
    EXPECT_EQ(printed(), std::string(title) + "a much longer name than the field Tracing\n"
                                              "                       b Tracing\n"
                                              "                       c Tracing, Profiling\n"
                                              "                       d , Profiling\n");
}

TEST_F(LgMajorGroupTest, printingIsRightAlignedAndLeavesTheStreamAsItWas)
{
    group("x");
    std::ostringstream stream;
    stream << std::left << std::hex;
    const std::ios_base::fmtflags flags = stream.flags();
    LgMajorGroup::printAll(stream);
    EXPECT_EQ(stream.str(), std::string(title) + "                       x Tracing\n");
    EXPECT_EQ(stream.flags(), flags);
}

TEST(LgMajorGroup, thereAreNoGroupsBeforeAndAfter)
{
    char const* const reason = "Log groups exist only while the logger is initialised.";
    LgMajorGroup::finalize();  // nothing to end
    const auto ask = [] { LgMajorGroup::getInstanceForName("a"); };
    expectThrow<ExInternalError, std::runtime_error>(ask, reason);
    expectThrow<ExInternalError, std::runtime_error>([] { LgMajorGroup::parse("a=Warning"); }, reason);
    std::ostringstream stream;
    expectThrow<ExInternalError, std::runtime_error>([&stream] { LgMajorGroup::printAll(stream); }, reason);
    LgMajorGroup::initialize("a=Tracing");
    EXPECT_EQ(LgMajorGroup::getInstanceForName("a").getLogLevels(), 0xFCu);
    LgMajorGroup::finalize();
    expectThrow<ExInternalError, std::runtime_error>(ask, reason);
    LgMajorGroup::initialize(nullptr);
    EXPECT_EQ(LgMajorGroup::getInstanceForName("a").getLogLevels(), 0xF0u);
    LgMajorGroup::finalize();
}

TEST(LgMajorGroup, anEndedGroupEnablesNothingUntilItsNameIsUsedAgain)
{
    LgMajorGroup::initialize(nullptr);
    LgMajorGroup& group = LgMajorGroup::getInstanceForName("a");
    const LgMinorGroup minor(group, "word");
    group.setLogThreshold(LgTypes::Tracing, false);
    group.setLogThreshold(LgTypes::Profiling, false);
    LgMajorGroup::finalize();
    for (int level = LgTypes::InternalError; level <= LgTypes::Profiling; ++level)
        EXPECT_FALSE(minor.isLevelEnabled(static_cast<LgTypes::Level>(level))) << level;

    LgMajorGroup::initialize(nullptr);
    std::ostringstream stream;
    LgMajorGroup::printAll(stream);
    EXPECT_EQ(stream.str(), title);
    EXPECT_FALSE(minor.isLevelEnabled(LgTypes::FatalError));
    EXPECT_EQ(&LgMajorGroup::getInstanceForName("a"), &group);
    EXPECT_EQ(&LgMajorGroup::getInstanceForName("a"), &group);
    EXPECT_EQ(group.getLogLevels(), 0xF0u);
    EXPECT_NE(&LgMajorGroup::getInstanceForName("b"), &group);
    LgMajorGroup::printAll(stream);
    EXPECT_EQ(stream.str(), std::string(title) + title +
                                "                       a Tracing\n"
                                "                       b Tracing\n");
    LgMajorGroup::finalize();
    EXPECT_EQ(group.getLogLevels(), 0u);
}
