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
/// | none                                               | shows how to call it, and the groups                |
/// | `GROUP ARG...`                                     | runs a group                                        |
/// | `-dumpLeaks GROUP ARG...`, `-detectLeaks GROUP...` | the same, and looks for leaks, as HmGC does         |
/// | `-dumpLibs GROUP ARG...`, `-dumpLibs`              | the same, or nothing, then lists the loaded modules |
/// | `-perf FILE`                                       | times groups by a list, as TestPerformer does       |
///
/// 0: done; 1: no such group, or no list; 2: an exception came out; 3: a leak was found. What went wrong is told
/// through TestInform. Static only; once in a process, on its main thread.
/// Tests: tests/base/testmgrtest.cpp, tests/groups.
class VN_BASE_EXPORT TestMgr
{
public:
    TestMgr() = delete;

    /// `argv[0]` is the program. Its handlers for exceptions that nobody catches stay installed.
    static int runTest(int argc, char** const argv);

    /// What TestGroup::isPixified() answers from here on.
    static void setIsPixified(bool isPixified);
};

}  // namespace Vn
