// Private to envvar.cpp, hmheapmgr.cpp and invariable.cpp.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace Vn
{

/// The whole number that a text begins with, as atol() and atoi() read it, but the nearest limit of `Integer` where they
/// promise nothing.
template <class Integer>
Integer wholeNumberOf(char const* text)
{
    return static_cast<Integer>(std::clamp<long>(
        std::strtol(text, nullptr, 10), std::numeric_limits<Integer>::min(), std::numeric_limits<Integer>::max()));
}

}  // namespace Vn
