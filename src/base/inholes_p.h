// Private to ininitmgr.cpp and inpackageinit.cpp.
#pragma once

#include <base/vector.h>

#include <cstddef>
#include <utility>

namespace Vn::InHoles
{

/// For sequences whose elements leave in any order while the others keep theirs.
///
/// An element that leaves becomes a hole, so that nothing behind it moves; `holes` counts them. This takes holes off the
/// end, and closes the others once they are more than half of the places. So n elements leave in a time that grows with n,
/// whatever the order; closed one by one it would grow with the square of n.
///
/// Call it when nobody walks through `sequence`. `isHole(element)` tells holes; `moved(element, place)` hears of each
/// element that comes to stand elsewhere.
/// Tests: tests/base/inholestest.cpp.
template <class T, class IsHole, class Moved>
void tidy(Vector<T>& sequence, std::size_t& holes, IsHole const& isHole, Moved const& moved)
{
    while (!sequence.empty() && isHole(sequence.back())) {
        sequence.pop_back();
        --holes;
    }
    if (2 * holes <= sequence.size())
        return;
    std::size_t place = 0;
    for (std::size_t i = 0; i < sequence.size(); ++i) {
        if (isHole(sequence[i]))
            continue;
        if (i != place) {
            sequence[place] = std::move(sequence[i]);
            moved(sequence[place], place);
        }
        ++place;
    }
    sequence.erase(sequence.begin() + static_cast<std::ptrdiff_t>(place), sequence.end());
    holes = 0;
}

}  // namespace Vn::InHoles
