#include <base/rnnumrecuniformrng_p.imp>

namespace Vn
{

template class RnNumRecUniformRng<float>;
template class RnNumRecUniformRng<double>;

}  // namespace Vn
