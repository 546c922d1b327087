// The instances of RnHaltonMultiRng. Two and three dimensions are part of the interface; for four
// there is RnNiederreiterMultiRng.
#include <base/rnhaltonmultirng.imp>

namespace Vn
{

template class RnHaltonMultiRng<float, 2>;
template class RnHaltonMultiRng<float, 3>;
template class RnHaltonMultiRng<double, 2>;
template class RnHaltonMultiRng<double, 3>;

}  // namespace Vn
