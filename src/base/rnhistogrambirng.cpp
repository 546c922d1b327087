#include <base/rnhistogrambirng.imp>

namespace Vn
{

template class RnHistogramBiRng<float>;
template class RnHistogramBiRng<double>;

}  // namespace Vn
