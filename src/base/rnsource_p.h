#pragma once

#include <base/rnbirng.h>
#include <base/rnrng.h>

namespace Vn
{

/// Whether `source` is exactly a generator of this library whose getSequence() is known to give what as many single draws
/// give, and so is what stands behind it. Only such a source is asked for many numbers at once where the rule speaks of
/// single draws: one of somebody else's may count its draws, or throw in the middle. Private to the library.
template <class T>
bool isAlikeInBulk(RnRng<T> const& source);
template <class T>
bool isAlikeInBulk(RnBiRng<T> const& source);

/// `n` single draws of `source`.
template <class T>
void drawMany(RnRng<T>& source, unsigned int n, T* samples)
{
    if (isAlikeInBulk(source)) {
        source.getSequence(n, samples);
        return;
    }
    for (unsigned int i = 0; i < n; ++i)
        samples[i] = source();
}

}  // namespace Vn
