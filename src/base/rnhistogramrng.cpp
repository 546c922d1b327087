#include <base/rnhistogramrng.imp>

namespace Vn
{

template class RnHistogramRng<float>;
template class RnHistogramRng<double>;

}  // namespace Vn
