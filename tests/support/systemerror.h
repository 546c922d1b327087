#pragma once

#include <base/exsyserror.h>

#include <gtest/gtest.h>

namespace VnTest
{

/// The system's code of the ExSysErrorWindows that `call` throws, which has to name `source`; -1 if it throws none.
template <class Call>
int systemErrorOf(Call const& call, char const* source)
{
    try {
        call();
    } catch (Vn::ExSysErrorWindows const& failure) {
        EXPECT_STREQ(failure.getFileName(), source);
        return failure.getErrorCode();
    }
    return -1;
}

}  // namespace VnTest
