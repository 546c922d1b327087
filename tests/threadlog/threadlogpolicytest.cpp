#include <threadlog/threadlogpolicy_p.h>

#include <gtest/gtest.h>

using Vn::LgTypes;
using Vn::ThreadLogPolicy;

TEST(ThreadLogPolicy, levelsAreNamedWithCommas)
{
    EXPECT_EQ(ThreadLogPolicy::parseLevels("Internal Error"), 0x1u);
    EXPECT_EQ(ThreadLogPolicy::parseLevels("Error,Warning"), 0xCu);
    EXPECT_EQ(ThreadLogPolicy::parseLevels("Profiling,Tracing,Informational"), 0x70u);
    EXPECT_EQ(ThreadLogPolicy::parseLevels("Error,Error"), 0x4u);
    EXPECT_EQ(ThreadLogPolicy::parseLevels("all"), 0x7Fu);
    EXPECT_EQ(ThreadLogPolicy::parseLevels("none"), 0u);
}

TEST(ThreadLogPolicy, whatNamesNoLevelIsRefusedAsAWhole)
{
    for (char const* text :
         {"", "error", "Error,", ",Error", "Error,,Warning", "Error, Warning", "Errors", "all,Error"})
        EXPECT_EQ(ThreadLogPolicy::parseLevels(text), std::nullopt) << text;
}

TEST(ThreadLogPolicy, aThresholdIsALevelOrNone)
{
    EXPECT_EQ(ThreadLogPolicy::parseThreshold("Internal Error"), 0);
    EXPECT_EQ(ThreadLogPolicy::parseThreshold("Tracing"), 5);
    EXPECT_EQ(ThreadLogPolicy::parseThreshold("none"), -1);
    for (char const* text : {"", "Profiling", "error", "all", "Error,Warning"})
        EXPECT_EQ(ThreadLogPolicy::parseThreshold(text), std::nullopt) << text;
}

TEST(ThreadLogPolicy, bitsAndThresholdAnswerForEachLevel)
{
    ThreadLogPolicy policy;
    EXPECT_TRUE(policy.isWaiting(LgTypes::InternalError));
    EXPECT_TRUE(policy.isWaiting(LgTypes::RecoverableError));
    EXPECT_FALSE(policy.isWaiting(LgTypes::Warning));
    EXPECT_FALSE(policy.isWaiting(LgTypes::Profiling));
    EXPECT_TRUE(policy.isUrgent(LgTypes::RecoverableError));
    EXPECT_FALSE(policy.isUrgent(LgTypes::Warning));
    policy.urgent = LgTypes::Tracing;
    EXPECT_TRUE(policy.isUrgent(LgTypes::Tracing));
    EXPECT_FALSE(policy.isUrgent(LgTypes::Profiling));
    policy.urgent = -1;
    EXPECT_FALSE(policy.isUrgent(LgTypes::InternalError));
}

TEST(ThreadLogPolicy, aNumberThatIsNoLevelNeitherWaitsNorIsUrgent)
{
    ThreadLogPolicy policy;
    policy.waiting = ~0u;
    policy.urgent = LgTypes::Tracing;
    for (const int number : {-1000, -1, 7, 31, 32, 64, 1000}) {
        const auto level = static_cast<LgTypes::Level>(number);
        EXPECT_FALSE(policy.isWaiting(level)) << number;
        EXPECT_FALSE(policy.isUrgent(level)) << number;
    }
}
