#pragma once

namespace VnTest
{

/// Steps of the C library's functions that walk: characters that are copied or moved, texts that are compared, and
/// variables that a look-up in the environment passes. Counted for this program and the libraries that it uses.
unsigned long getSteps();

}  // namespace VnTest
