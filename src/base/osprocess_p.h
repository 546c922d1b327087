// Private to osprocess.cpp; implemented in osprocesslinux.cpp and osprocesswindows.cpp.
#pragma once

#include <base/objptr.h>
#include <base/osprocess.h>

namespace Vn::System
{

/// Starts a child. Throws ExSysErrorWindows.
ObjPtrRet<OsProcessImp> startProcess(char const* const* argv);

}  // namespace Vn::System
