#pragma once

#include "command.h"

#include <string>
#include <string_view>

namespace vnlog
{

/// @{
/// Makes a page of logs: one HTML file that shows threads as lanes, calls as nested bars, and messages, losses and reports of
/// profilers in them.
Vn::InUsage getTimelineUsage();
int runTimeline(std::vector<std::string> const& operands);
/// @}

constexpr Command timelineCommand = {"timeline", "makes a page that shows threads, calls and messages along time",
                                     getTimelineUsage, runTimeline};

/// The page: template, style and scripts of the folder page, with `title` as text and `data`, compressed and in base 64.
///
/// Throws std::runtime_error if there is no memory to compress.
std::string makeTimelinePage(std::string_view title, std::string_view data);

}  // namespace vnlog
