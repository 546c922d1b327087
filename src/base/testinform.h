#pragma once

#include <base/baseexport.h>

namespace Vn
{

/// Tells how a test run has failed: to the file that `VN_RUN_TEST_MSGS` names, which then holds the last such
/// message, or else as a line of trace. A file that can't be written loses the message. A null reason is left out.
/// Static only.
/// Tests: tests/base/testinformtest.cpp.
class VN_BASE_EXPORT TestInform
{
public:
    TestInform() = delete;

    /// "Test not performed: " and the reason.
    static void testNotPerformed(char const* reason);

    /// "Exception encountered: " and the reason.
    static void exceptionEncountered(char const* reason);

    /// "Abnormal termination: " and the reason.
    static void abnormalTermination(char const* reason);
};

}  // namespace Vn
