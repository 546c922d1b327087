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
}  // namespace

/// What stands behind a generator of numbers that draws from another; null for others.
struct RnSource
{
    template <class T>
    static RnRng<T> const* behind(RnRng<T> const& rng, std::type_info const& type)
    {
        if (type == typeid(RnGaussianRng<T>))
            return static_cast<RnGaussianRng<T> const&>(rng)._uniRng;
        if (type == typeid(RnMexicanHatRng<T>))
            return static_cast<RnMexicanHatRng<T> const&>(rng)._uniRng;
        if (type == typeid(RnHistogramRng<T>))
            return static_cast<RnHistogramRng<T> const&>(rng)._rng;
        return nullptr;
    }
};

template <class T>
bool isAlikeInBulk(RnRng<T> const& source)
{
    std::type_info const& type = typeid(source);
    if (isOneOf<RnLecuyerUniformRng<T>, RnNumRecUniformRng<T>, RnVanDerCorputRng<T>, RnStdUniformRng<T>>(type))
        return true;
    RnRng<T> const* const behind = RnSource::behind(source, type);
    return behind != nullptr && isAlikeInBulk(*behind);
}

template <class T>
bool isAlikeInBulk(RnBiRng<T> const& source)
{
    return isOneOf<RnHaltonBiRng<T>>(typeid(source));
}

template bool isAlikeInBulk(RnRng<float> const& source);
template bool isAlikeInBulk(RnRng<double> const& source);
template bool isAlikeInBulk(RnBiRng<float> const& source);
template bool isAlikeInBulk(RnBiRng<double> const& source);

}  // namespace Vn
