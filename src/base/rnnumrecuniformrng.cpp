#include <base/rnnumrecuniformrng.imp>

namespace Vn
{

template class RnNumRecUniformRng<float>;
template class RnNumRecUniformRng<double>;

}  // namespace Vn
