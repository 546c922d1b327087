#pragma once

namespace Inventory
{

/// Tells the registry of versions what the program is. Before the start, so that --version has it too.
void registerVersion();

}  // namespace Inventory
