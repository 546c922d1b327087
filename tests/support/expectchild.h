#pragma once

#include "child.h"

#include <gtest/gtest.h>

namespace VnTest
{

/// Expects a body to end with 0 and to write exactly `out`, and nothing to the standard error stream.
inline void expectOutput(char const* body, std::string const& out)
{
    const ChildRun run = Child(body).without("VN_DEBUG_INITIALIZE").run();
    EXPECT_EQ(run.out, out);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.exitCode, 0);
}

}  // namespace VnTest
