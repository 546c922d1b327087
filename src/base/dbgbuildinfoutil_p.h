// Private to dbgbuildinfoutil.cpp; implemented in dbgbuildinfoutillinux.cpp and dbgbuildinfoutilwindows.cpp.
#pragma once

namespace Vn::System
{

/// Whether an address is in the loaded library that the system knows by this file name. Linux finds a function by
/// name in the libraries that a library needs as well.
bool isInModule(void* address, char const* file);

}  // namespace Vn::System
