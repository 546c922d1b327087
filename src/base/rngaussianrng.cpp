#include <base/rngaussianrng_p.imp>

namespace Vn
{

template class RnGaussianRng<float>;
template class RnGaussianRng<double>;

}  // namespace Vn
