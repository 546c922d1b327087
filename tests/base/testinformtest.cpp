#include <base/osenv.h>
#include <base/testinform.h>
#include <base/trace.h>

#include "expectchild.h"
#include "tempfolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

using Vn::TestInform;

VN_CHILD(informed)
{
    TestInform::testNotPerformed("no display");
    TestInform::testNotPerformed(nullptr);
    TestInform::exceptionEncountered("went wrong");
    TestInform::exceptionEncountered("");
    TestInform::abnormalTermination("two\nlines");
    Vn::Trace::setOptions("off");
    TestInform::abnormalTermination("with trace off");
    return 0;
}

TEST(TestInform, tellsByTheManagerOfTrace)
{
    const VnTest::ChildRun run = VnTest::Child("informed").without("VN_RUN_TEST_MSGS").run();
    EXPECT_EQ(run.out, "Test not performed: no display\n"
                       "Test not performed: \n"
                       "Exception encountered: went wrong\n"
                       "Exception encountered: \n"
                       "Abnormal termination: two\nlines\n"
                       "Abnormal termination: with trace off\n");
}

#if !defined(_WIN32)  // which has no empty variables
TEST(TestInform, anEmptyVariableNamesNoFile)
{
    EXPECT_EQ(VnTest::Child("informed").with("VN_RUN_TEST_MSGS", "").run().out.substr(0, 30),
              "Test not performed: no display");
}
#endif

TEST(TestInform, theFileHoldsTheLastMessage)
{
    const VnTest::TempFolder temp;
    const std::string file = temp.file("messages", std::string(1000, 'o'));
    const VnTest::ChildRun run = VnTest::Child("informed").with("VN_RUN_TEST_MSGS", file).run();
    EXPECT_EQ(run.out, "");
    const std::string content = VnTest::contentOf(file);
    EXPECT_EQ(content.substr(0, 36), "Abnormal termination: with trace off");
    EXPECT_EQ(content.back(), '\n');
    EXPECT_LE(content.size(), 38U);
}

TEST(TestInform, aFileThatCantBeWrittenLosesTheMessage)
{
    const VnTest::TempFolder temp;
    const VnTest::ChildRun run = VnTest::Child("informed").with("VN_RUN_TEST_MSGS", temp.path("a/b")).run();
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_FALSE(std::filesystem::exists(temp.path("a")));
}
