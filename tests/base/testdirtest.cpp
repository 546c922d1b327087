#include <base/exinternalerror.h>
#include <base/osenv.h>
#include <base/testdir.h>

#include "expectchild.h"
#include "tempfolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <iostream>

using Vn::OsEnv;
using Vn::OsFilePath;
using Vn::TestDir;

VN_CHILD(testDirFirstAnswer)
{
    std::cout << TestDir::getDefaultPath() << "\n";
    OsEnv::putVariable("VN_TEST_DIR=elsewhere");
    std::cout << TestDir::getDefaultPath() << "\n";
    std::cout << (OsFilePath::compare(TestDir::getDefaultPath().getChars(), OsFilePath::getTempDir().getChars()) ==
                  0)
              << "\n";
    return 0;
}

TEST(TestDir, isTheVariableOfTheFirstCall)
{
    EXPECT_EQ(VnTest::Child("testDirFirstAnswer").with("VN_TEST_DIR", "some/where").run().out,
              "some/where\nsome/where\n0\n");
}

TEST(TestDir, isTheSystemsFolderWithoutTheVariable)
{
    const std::string out = VnTest::Child("testDirFirstAnswer").without("VN_TEST_DIR").run().out;
    EXPECT_EQ(out.substr(out.size() - 2), "1\n") << out;
}

TEST(TestDir, createTakesWhatIsThere)
{
    const VnTest::TempFolder temp;
    const OsFilePath path(temp.path("made").c_str());
    EXPECT_STREQ(TestDir::create(path).getChars(), path.getChars());
    EXPECT_TRUE(std::filesystem::is_directory(temp.path("made")));
    EXPECT_STREQ(TestDir::create(path).getChars(), path.getChars());
    EXPECT_THROW(TestDir::create(OsFilePath(temp.file("file").c_str())), Vn::ExInternalError);
}
