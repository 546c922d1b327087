#include <base/rnsource.h>

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

template <class T>
bool isAlikeInBulk(RnRng<T> const& source)
{
    return isOneOf<RnLecuyerUniformRng<T>, RnNumRecUniformRng<T>, RnVanDerCorputRng<T>, RnGaussianRng<T>,
                   RnMexicanHatRng<T>, RnHistogramRng<T>, RnStdUniformRng<T>>(typeid(source));
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
