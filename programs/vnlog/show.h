#pragma once

#include "command.h"

namespace vnlog
{

/// @{
/// Prints the lines of logs as people read them: dates for ticks, the wanted lines alone, in colours.
Vn::InUsage getShowUsage();
int runShow(std::vector<std::string> const& operands);
/// @}

constexpr Command showCommand = {"show", "prints logs with dates, chosen lines alone, in colours", getShowUsage,
                                 runShow};

}  // namespace vnlog
