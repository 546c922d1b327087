#pragma once

#include "command.h"

#include <cstdint>
#include <string>

namespace vnlog
{

/// @{
/// Prints the lines of several logs in one order, by the dates and clocks of their banners.
Vn::InUsage getMergeUsage();
int runMerge(std::vector<std::string> const& operands);
/// @}

constexpr Command mergeCommand = {"merge", "brings logs of several processes into one order", getMergeUsage,
                                  runMerge};

/// A file, and how far its clock is to be moved.
struct FileOperand
{
    std::string name;
    std::int64_t offset = 0;  ///< nanoseconds that are added to its times
    bool hasOffset = false;

    bool operator==(FileOperand const&) const = default;
};

/// Takes an operand apart. What is no offset belongs to the name.
///
///     "a.log"           ->  a.log
///     "a.log:+0.012s"   ->  a.log, 12 ms later
///     "a.log:-3ms"      ->  a.log, 3 ms earlier; also us, ns, m and h, and seconds without a unit
///     "C:\a.log"        ->  that, for lack of a sign
///
FileOperand parseOperand(std::string const& operand);

}  // namespace vnlog
