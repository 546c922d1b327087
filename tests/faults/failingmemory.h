#pragma once

namespace VnTest
{

/// What a failing allocation is followed by.
enum class Failing
{
    once,
    fromThereOn
};

/// Lets allocation number `first`, counted from 0, of all threads fail: malloc() and what is like it, and so operator new
/// and the C library's own allocations, too.
/// The first one calls `onFailure` before.
void failAllocation(long first, Failing failing, void (*onFailure)());

/// Ends that, and tells how many allocations there were meanwhile.
long stopFailingAllocations();

/// How many of them have failed.
long countFailedAllocations();

/// How many blocks the process holds.
long countHeldBlocks();

}  // namespace VnTest
