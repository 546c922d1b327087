#pragma once

#include <iosfwd>

namespace Inventory
{

/// Prints what the program and the libraries in this process are; `verbose`: and who built them.
void printVersion(std::ostream& stream, bool verbose);

}  // namespace Inventory
