// Private to envvar.cpp, hmheapmgr.cpp and incontextalias.cpp.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace Vn
{

/// The whole number that a text begins with, as atol() and atoi() read it. Where these are undefined, a number that
/// does not fit, the result is the nearest limit of `Integer`.
///
///     " 12x"          ->  12
///     "x", ""         ->  0
///     "99999999999"   ->  2147483647 for int
///
template <class Integer>
Integer wholeNumberOf(char const* text)
{
    return static_cast<Integer>(std::clamp<long>(
        std::strtol(text, nullptr, 10), std::numeric_limits<Integer>::min(), std::numeric_limits<Integer>::max()));
}

}  // namespace Vn
