// Private to lmlibraries.cpp; implemented in lmlibrarieslinux.cpp and lmlibrarieswindows.cpp.
#pragma once

#include <base/lmlibrary.h>

#include <vector>

namespace Vn::System
{

/// Appends the modules of this process, in the order of their addresses. False if the system refuses to tell, with
/// its last error set; what has been appended by then may be incomplete. Throws std::bad_alloc.
/// One thread at a time.
bool addLoadedModules(std::vector<LmLibrary>& libraries);

}  // namespace Vn::System
