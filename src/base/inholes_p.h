// Private to ininitmgrstate.cpp and inpackageinit.cpp.
#pragma once

#include <base/vector.h>

#include <algorithm>
#include <cstddef>
#include <utility>

/// For sequences whose elements leave in any order while the others keep theirs.
///
/// An element that leaves becomes a hole, so that nothing behind it moves. Holes at the end go at once, by
/// dropAtEnd(); the others go when the sequence would have to grow and more than half of it are holes, by makeRoom().
/// So n elements leave in a time that grows with n, whatever the order; closed one by one the holes would cost time
/// that grows with the square of n.
///
/// Neither may be called while a loop walks through the sequence. `isHole(element)` tells holes;
/// `moved(element, place)` is called for each element that now stands elsewhere.
/// Tests: tests/base/inholestest.cpp.
namespace Vn::InHoles
{

/// Removes the holes at the end.
template <class T, class IsHole>
void dropAtEnd(Vector<T>& sequence, IsHole const& isHole)
{
    while (!sequence.empty() && isHole(sequence.back()))
        sequence.pop_back();
}

/// Removes all holes.
template <class T, class IsHole, class Moved>
void close(Vector<T>& sequence, IsHole const& isHole, Moved const& moved)
{
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
}

/// To be called before elements are appended: removes the holes instead of growing around them, if they are more than
/// half. It looks only when the sequence is full, which happens ever more rarely as it grows.
template <class T, class IsHole, class Moved>
void makeRoom(Vector<T>& sequence, IsHole const& isHole, Moved const& moved)
{
    if (sequence.size() < sequence.capacity())
        return;
    const auto holes = static_cast<std::size_t>(std::count_if(sequence.begin(), sequence.end(), isHole));
    if (2 * holes > sequence.size())
        close(sequence, isHole, moved);
}

}  // namespace Vn::InHoles
