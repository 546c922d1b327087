#pragma once

#include <base/baseexport.h>

namespace Vn
{

/// Takes a trace text into the logger, for a TraceManager that wants it there.
///
///     void LogTraceManager::print(char const* text) const { Vn::LgTrace::print(text); }
///
/// Holds no state; any thread may call it.
/// Tests: tests/base/lgtracetest.cpp.
class VN_BASE_EXPORT LgTrace
{
public:
    LgTrace() = delete;

    /// Puts `text` into the calling thread's queue at the level `Tracing`.
    ///
    ///     null, ""                                 ->  nothing
    ///     while the logger isn't active            ->  standard output, with a line end
    ///     no room in the queue                     ->  lost and counted
    ///     too long for the free text ring          ->  "#"
    ///     with LgLog::getBlockingTrace()           ->  waits for space first, if the queue has an observer
    ///     and more than 32,765 characters          ->  several messages of at most 32,765 characters
    static void print(char const* text);
};

}  // namespace Vn
