#pragma once

#include <string_view>

namespace vnlog
{

constexpr int pageScriptCount = 4;

/// @{
/// Files of the folder page, which embedpage.cmake makes a source of: the frame with its marks @TITLE@, @STYLE@, @DATA@ and
/// @SCRIPT@, and what takes their places. The scripts stand in the order in which they need each other.
extern const std::string_view pageFrame, pageStyle, pageScripts[pageScriptCount];
/// @}

}  // namespace vnlog
