#pragma once

#include <cstddef>

namespace VnSoak
{

/// Bytes that the C library, or a sanitizer in its place, has allocated and not freed. What it keeps back for the next
/// allocation counts in part, so a steady program moves by some kilobytes.
std::size_t getLiveMemory();

/// Whether that stays the same when a library comes and goes. The address sanitizer keeps an entry of its own for each
/// static object of each load; it tells of leaks instead when the program ends.
bool isFlatWithoutLeaks();

}  // namespace VnSoak
