#include <base/rnhaltonbirng.imp>

namespace Vn
{

template class RnHaltonBiRng<float>;
template class RnHaltonBiRng<double>;

}  // namespace Vn
