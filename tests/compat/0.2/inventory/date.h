#pragma once

#include <base/osdatetypes.h>

#include <string>

namespace Inventory
{

/// The date in local time, as "2001-09-09 01:46:40"; "(no date)" if it is none.
std::string textOf(Vn::OsDateTypes::DateRep const& date);

}  // namespace Inventory
