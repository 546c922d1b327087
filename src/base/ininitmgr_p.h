// Private to ininitmgrstate.cpp; implemented in ininitmgrposix.cpp and ininitmgrwindows.cpp.
#pragma once

#include <string>
#include <vector>

namespace Vn::System
{

/// The entries of the process environment, "NAME=value" each, as the system holds them; on Windows in the process's
/// ANSI code page. Empty after `clearenv`.
std::vector<std::string> getEnvironmentEntries();

/// Windows: the entries of a block in which each ends with a zero and an empty one ends all:
///
///     L"A=1\0B=2\0"  ->  "A=1", "B=2"
std::vector<std::string> entriesOf(wchar_t const* block);

}  // namespace Vn::System
