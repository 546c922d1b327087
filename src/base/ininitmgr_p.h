// Private to ininitmgr.cpp; implemented in ininitmgrposix.cpp and ininitmgrwindows.cpp.
#pragma once

#include <string>
#include <vector>

namespace Vn::System
{

/// The entries of the process environment, as the system holds them.
std::vector<std::string> getEnvironmentEntries();

}  // namespace Vn::System
