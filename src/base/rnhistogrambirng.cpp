#include <base/rnhistogrambirng_p.imp>

namespace Vn
{

template class RnHistogramBiRng<float>;
template class RnHistogramBiRng<double>;

}  // namespace Vn
