#include "child.h"

#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    int exitCode = 0;
    if (VnTest::runChildBody(argc, argv, exitCode))
        return exitCode;
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
