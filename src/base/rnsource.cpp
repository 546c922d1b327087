// Which sources may be asked for many numbers at once.
//
// A consumer that the rules describe by single draws may use getSequence() only if nobody can tell
// the difference: the numbers, the state left behind, and what happens if a draw throws. The
// library knows that of its own classes and of no others, so the question is answered by the exact
// type of the source, in one place.
//
// Not a virtual function of RnRng: the table of virtual functions is part of the interface, and a
// program's derived class would inherit an answer that its own draws do not keep. Types are
// compared by typeid, which compares names where a module has a copy of its own.
#include <base/rnsource_p.h>

#include <base/rngaussianrng.h>
#include <base/rnhaltonbirng.h>
#include <base/rnhistogramrng.h>
#include <base/rnlecuyeruniformrng.h>
#include <base/rnmexicanhatrng.h>
#include <base/rnnumrecuniformrng.h>
#include <base/rnstduniformrng.h>
#include <base/rnvandercorputrng.h>

#include <typeinfo>

namespace Vn
{
namespace
{
template <class... Classes>
bool isOneOf(std::type_info const& type)
{
    return ((type == typeid(Classes)) || ...);
}

/// The source of `rng` if it is exactly a Generator, asked through that class's interface;
/// otherwise null.
template <class Generator, class T>
RnRng<T> const* sourceIf(RnRng<T> const& rng)
{
    return typeid(rng) == typeid(Generator) ? static_cast<Generator const&>(rng).getSource() : nullptr;
}

/// The source of a generator of numbers that draws from another one; null for all others.
template <class T>
RnRng<T> const* sourceOf(RnRng<T> const& rng)
{
    if (RnRng<T> const* const source = sourceIf<RnGaussianRng<T>>(rng))
        return source;
    if (RnRng<T> const* const source = sourceIf<RnMexicanHatRng<T>>(rng))
        return source;
    return sourceIf<RnHistogramRng<T>>(rng);
}
}  // namespace

template <class T>
bool isBulkSafe(RnRng<T> const& source)
{
    if (isOneOf<RnLecuyerUniformRng<T>, RnNumRecUniformRng<T>, RnVanDerCorputRng<T>, RnStdUniformRng<T>>(
            typeid(source)))
        return true;
    RnRng<T> const* const behind = sourceOf(source);
    return behind != nullptr && isBulkSafe(*behind);
}

// RnHammersleyBiRng and the separable generators are missing on purpose: their sequences are other
// points than their single draws. RnHistogramBiRng would gain nothing.
template <class T>
bool isBulkSafe(RnBiRng<T> const& source)
{
    return isOneOf<RnHaltonBiRng<T>>(typeid(source));
}

template bool isBulkSafe(RnRng<float> const& source);
template bool isBulkSafe(RnRng<double> const& source);
template bool isBulkSafe(RnBiRng<float> const& source);
template bool isBulkSafe(RnBiRng<double> const& source);

}  // namespace Vn
