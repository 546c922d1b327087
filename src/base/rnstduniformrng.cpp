#include <base/rnstduniformrng_p.imp>

namespace Vn
{

template class RnStdUniformRng<float>;
template class RnStdUniformRng<double>;

}  // namespace Vn
