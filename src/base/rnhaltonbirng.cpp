#include <base/rnhaltonbirng_p.imp>

namespace Vn
{

template class RnHaltonBiRng<float>;
template class RnHaltonBiRng<double>;

}  // namespace Vn
