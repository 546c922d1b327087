// Private to ininitmgr.cpp; implemented in ininitmgrposix.cpp and ininitmgrwindows.cpp.
#pragma once

#include <string>
#include <vector>

namespace Vn::System
{

/// The entries of the process environment, as the system holds them; on Windows in the process's ANSI code page.
std::vector<std::string> getEnvironmentEntries();

/// Windows: the entries of such a block, each ended by a zero and all by an empty one, in the ANSI code page.
std::vector<std::string> entriesOf(wchar_t const* block);

}  // namespace Vn::System
