#pragma once

#include <new>

namespace VnTest
{

/// Makes one allocation of this thread fail: the one `countdown` allocations from now.
void startFailing(int countdown);

/// Ends the countdown, and tells whether the allocation has failed.
bool stopFailing();

/// How many blocks the whole process holds at this moment.
long countBlocks();

/// Runs `action` with its allocation number `n` failing, counted from 0. True if that let it fail; false if it got
/// through with fewer allocations. So this visits every allocation of an action:
///
///     for (int n = 0; failsWithoutMemory(n, action); ++n)
///         check what it left behind;
template <class Action>
bool failsWithoutMemory(int n, Action const& action)
{
    bool hasThrown = false;
    startFailing(n);
    try {
        action();
    } catch (std::bad_alloc const&) {
        hasThrown = true;
    }
    const bool hasFailed = stopFailing();
    return hasThrown || hasFailed;
}

}  // namespace VnTest
