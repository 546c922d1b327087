#pragma once

#include <cstddef>

namespace VnSoak
{

/// Bytes that the C library, or a sanitizer in its place, has allocated and not freed. What it keeps back for the next
/// allocation counts in part, so a steady program moves by some kilobytes.
std::size_t getLiveMemory();

}  // namespace VnSoak
