#include <base/rnlecuyeruniformrng_p.imp>

namespace Vn
{

template class RnLecuyerUniformRng<float>;
template class RnLecuyerUniformRng<double>;

}  // namespace Vn
