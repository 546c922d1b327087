#pragma once

#include <base/baseexport.h>

namespace Vn
{

/// The way of a trace text into the logger, for a TraceManager that wants it there.
///
///     void LogTraceManager::print(char const* text) const { Vn::LgTrace::print(text); }
///
/// Tests: tests/base/lgtracetest.cpp.
class VN_BASE_EXPORT LgTrace
{
public:
    LgTrace() = delete;

    /// Puts `text` into the calling thread's queue at the level `Tracing`; on the standard output stream while the logger
    /// isn't active. An empty text, or null, does nothing. With LgLog::getBlockingTrace() it waits for space first, where
    /// the queue has an observer, and cuts a text that no queue can hold; otherwise such a text becomes a "#".
    static void print(char const* text);
};

}  // namespace Vn
