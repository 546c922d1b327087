#pragma once

#include <iosfwd>

namespace Inventory
{

/// Prints what the library knows of the machine: names, processor, caches, clock.
void printMachine(std::ostream& stream);

/// Prints the modules that this process has loaded, each with its size in memory.
void printModules(std::ostream& stream);

}  // namespace Inventory
