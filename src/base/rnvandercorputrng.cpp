#include <base/rnvandercorputrng.imp>

namespace Vn
{

template class RnVanDerCorputRng<float>;
template class RnVanDerCorputRng<double>;

}  // namespace Vn
