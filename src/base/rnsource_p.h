// Private to the samplers.
#pragma once

#include <base/rnbirng.h>
#include <base/rnrng.h>

namespace Vn
{

/// Whether one getSequence() of `source` may stand for as many single draws: same numbers, same
/// state afterwards, nothing that a caller could notice.
///
/// True for exactly the generators of this library that promise so, if what they draw from is such
/// a generator too. False for every class of somebody else, a class derived from one of ours
/// included: its single draws may count, log, or throw half-way, and the draws before that must not
/// be lost.
///
///     RnLecuyerUniformRng                       ->  true
///     RnGaussianRng over RnLecuyerUniformRng    ->  true
///     RnGaussianRng over a program's own class  ->  false
///     RnHammersleyBiRng                         ->  false: its sequences are other points
///
/// @{
template <class T>
bool isBulkSafe(RnRng<T> const& source);
template <class T>
bool isBulkSafe(RnBiRng<T> const& source);
/// @}

/// Writes `map` of each of `n` draws to `samples`, by one getSequence() if that is safe. If a draw
/// throws, the samples before it are complete.
template <class T, class Map>
void fillMapped(RnRng<T>& source, unsigned int n, T* samples, Map map)
{
    if (!isBulkSafe(source)) {
        for (unsigned int i = 0; i < n; ++i)
            samples[i] = map(source());
        return;
    }
    source.getSequence(n, samples);
    for (unsigned int i = 0; i < n; ++i)
        samples[i] = map(samples[i]);
}

}  // namespace Vn
