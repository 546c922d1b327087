#pragma once

namespace Inventory
{

/// Whether a person reads the standard error stream.
bool isErrorStreamATerminal();

}  // namespace Inventory
