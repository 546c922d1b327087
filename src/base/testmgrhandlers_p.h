// Private to testmgr.cpp.
#pragma once

#include <base/exbadexception.h>
#include <base/testinform.h>
#include <base/testtrace_p.h>

#include <cstdlib>
#include <exception>

namespace Vn
{

/// What a test program does with an exception that a function may not throw, and with one that nothing catches.
struct TestMgrHandlers
{
    static constexpr char sourceName[] = "src/base/testmgr";

    /// Turns what a function may not throw into a known class, which the driver catches.
    [[noreturn]] static void handleUnexpected()
    {
        Trace& trace = TraceManager::getInstance().getTrace();
        const Trace::Entry entry(trace, *Trace::MainTraceLevel, "unexpectedHandler()", sourceName, __LINE__);
        traceTest(sourceName, __LINE__, "Bad exception encountered.");
        const ExBadException exception(sourceName, __LINE__);
        trace.printException(exception, sourceName, __LINE__);
        throw exception;
    }

    /// Reports and aborts: the stack can't unwind any more, so nothing is stopped or destroyed.
    [[noreturn]] static void handleTermination()
    {
        const Trace::Entry entry(TraceManager::getInstance().getTrace(), *Trace::MainTraceLevel,
                                 "terminateHandler()", sourceName, __LINE__);
        TestInform::abnormalTermination("Terminate handler called.");
        std::abort();
    }

    /// For the rest of the process.
    static void install()
    {
#if defined(__GLIBCXX__)
        // The language has dropped what would call it; this standard library still takes it.
#    pragma GCC diagnostic push
#    pragma GCC diagnostic ignored "-Wdeprecated-declarations"
        std::set_unexpected(handleUnexpected);
#    pragma GCC diagnostic pop
#endif
        std::set_terminate(handleTermination);
    }
};

}  // namespace Vn
