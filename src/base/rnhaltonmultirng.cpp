#include <base/rnhaltonmultirng_p.imp>

namespace Vn
{

template class RnHaltonMultiRng<float, 2>;
template class RnHaltonMultiRng<float, 3>;
template class RnHaltonMultiRng<double, 2>;
template class RnHaltonMultiRng<double, 3>;

}  // namespace Vn
