// Private to osprocess.cpp; implemented in osprocesslinux.cpp and osprocesswindows.cpp.
#pragma once

#include <base/objptr.h>
#include <base/osprocess.h>

namespace Vn::System
{

/// Starts the program `argv[0]` with the arguments up to the null at the end, and returns once it runs. Throws
/// ExSysErrorWindows if the system can't, also for an empty array; no process is left then.
ObjPtrRet<OsProcessImp> startProcess(char const* const* argv);

}  // namespace Vn::System
