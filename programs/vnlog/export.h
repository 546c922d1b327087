#pragma once

#include "command.h"

#include <string>
#include <vector>

namespace vnlog
{
/// @{
/// `vnlog export`: logs in the forms that other tools read. Tests: tests/vnlog/exports.py.
Vn::InUsage getExportUsage();
int runExport(std::vector<std::string> const& operands);

constexpr Command exportCommand = {"export", "writes logs in forms that other tools read", getExportUsage,
                                   runExport};
/// @}

}  // namespace vnlog
