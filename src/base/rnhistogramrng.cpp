#include <base/rnhistogramrng_p.imp>

namespace Vn
{

template class RnHistogramRng<float>;
template class RnHistogramRng<double>;

}  // namespace Vn
