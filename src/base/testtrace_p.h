// Private to testgroup.cpp, testmgr.cpp and testmgrhandlers_p.h.
#pragma once

#include <base/trace.h>

#include <sstream>
#include <string>

namespace Vn
{

/// Traces one line of the test harness at the level "Main", if that is on: prefix and text in one print, since the
/// trace output ends each print with a line end.
inline void traceTest(char const* file, int line, std::string const& text)
{
    if (!Trace::isEnabled(*Trace::MainTraceLevel))
        return;
    std::ostringstream stream;
    TraceManager& manager = TraceManager::getInstance();
    manager.getTrace().log(stream, file, line);
    stream << text << '\0';
    manager.print(stream.str().c_str());
}

}  // namespace Vn
