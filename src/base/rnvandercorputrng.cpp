#include <base/rnvandercorputrng_p.imp>

namespace Vn
{

template class RnVanDerCorputRng<float>;
template class RnVanDerCorputRng<double>;

}  // namespace Vn
