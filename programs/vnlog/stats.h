#pragma once

#include "command.h"

namespace vnlog
{

/// @{
/// Prints how many messages there are by level, group and thread, and when they came.
Vn::InUsage getStatsUsage();
int runStats(std::vector<std::string> const& operands);
/// @}

constexpr Command statsCommand = {"stats", "counts messages by level, group and thread, and draws them over time",
                                  getStatsUsage, runStats};

}  // namespace vnlog
