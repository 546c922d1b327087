#include <base/assertions.h>
#include <base/exinternalerror.h>

#include "expectthrow.h"

#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>
#include <string>

using Vn::Assertions;
using Vn::ExInternalError;
using VnTest::expectThrow;

TEST(Assertions, failedAssertionNamesItsCondition)
{
    expectThrow<ExInternalError, std::runtime_error>(
        [] { Assertions::throwAssertionFailed("src/base/x", 12, "_sigma > 0"); }, "Assertion '_sigma > 0' failed.");
}

TEST(Assertions, failedSystemAssertionNamesConditionNumberAndText)
{
    const std::string expected = std::string("Assertion 'fd >= 0' failed, errno = 2 (") + std::strerror(2) + ").";
    expectThrow<ExInternalError, std::runtime_error>(
        [] { Assertions::throwSysAssertionFailed("src/base/x", 12, "fd >= 0", 2); }, expected.c_str());
}

TEST(Assertions, programAbortedIsAnException)
{
    expectThrow<ExInternalError, std::runtime_error>([] { Assertions::throwProgramAborted("src/base/x", 12); },
                                                     "Program aborted.");
}

TEST(Assertions, textIsCutTo1023Characters)
{
    const std::string frame = "Assertion '' failed.";
    const struct
    {
        char const* what;
        std::size_t condition;
    } table[] = {{"just fits", 1023 - 20}, {"one too many", 1023 - 19}, {"far too many", 5000}};
    for (auto const& row : table) {
        SCOPED_TRACE(row.what);
        const std::string condition(row.condition, 'c');
        const std::string whole = "Assertion '" + condition + "' failed.";
        ASSERT_EQ(whole.size(), frame.size() + row.condition);
        expectThrow<ExInternalError, std::runtime_error>(
            [&] { Assertions::throwAssertionFailed("src/base/x", 1, condition.c_str()); },
            whole.substr(0, 1023).c_str());
    }
}

TEST(Assertions, nullConditionCountsAsEmpty)
{
    expectThrow<ExInternalError, std::runtime_error>(
        [] { Assertions::throwAssertionFailed("src/base/x", 1, nullptr); }, "Assertion '' failed.");
}
