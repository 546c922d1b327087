#pragma once

#include <string_view>

namespace vnlog
{

/// @{
/// Files of the folder page, which embedpage.cmake makes a source of: the frame with its marks @TITLE@, @STYLE@, @DATA@ and
/// @SCRIPT@, and what takes their places.
extern const std::string_view pageFrame, pageStyle, pageScript;
/// @}

}  // namespace vnlog
