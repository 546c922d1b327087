#pragma once

#include <base/baseexport.h>

namespace Vn
{

/// Reports how a test run has failed.
///
///     Vn::TestInform::testNotPerformed("no network");    // "Test not performed: no network"
///
/// The report goes to the file that `VN_RUN_TEST_MSGS` names, and each one replaces the one before. Without that
/// variable it goes to the trace output, whatever trace levels are on. A file that can't be written loses the report.
/// A null reason counts as empty. Static only, one thread.
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
