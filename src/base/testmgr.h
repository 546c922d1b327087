#pragma once

#include <base/baseexport.h>

namespace Vn
{

/// The whole `main` of a test program: brings the library up, picks a TestGroup by the command line, runs it, and
/// turns every outcome into an exit code.
///
///     int main(int argc, char** argv) { return Vn::TestMgr::runTest(argc, argv); }
///
/// | arguments                                          |                                                     |
/// |----------------------------------------------------|-----------------------------------------------------|
/// | none                                               | prints the usage and the groups                     |
/// | `GROUP ARG...`                                     | runs a group                                        |
/// | `-dumpLeaks GROUP ARG...`, `-detectLeaks GROUP...` | the same with leak checking by HmGC                 |
/// | `-dumpLibs GROUP ARG...`, `-dumpLibs`              | the same, or nothing, then lists the loaded modules |
/// | `-perf FILE`                                       | times groups by a list, as TestPerformer does       |
///
/// Exit codes: 0 done, 1 unknown group or missing list, 2 an exception, 3 a leak. Failures are reported through
/// TestInform; a leak is reported by the exit code alone. Static only; call it once in a process, on the main thread.
/// Tests: tests/base/testmgrtest.cpp, tests/groups.
class VN_BASE_EXPORT TestMgr
{
public:
    TestMgr() = delete;

    /// Returns the exit code. `argv[0]` is the program's name. Throws nothing: an exception becomes exit code 2. The
    /// handlers that it installs for exceptions that nothing catches stay installed.
    static int runTest(int argc, char** const argv);

    /// What TestGroup::isPixified() answers from here on.
    static void setIsPixified(bool isPixified);
};

}  // namespace Vn
