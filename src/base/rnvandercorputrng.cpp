// The instances of RnVanDerCorputRng. The Halton and Hammersley generators include the same bodies,
// so that their own draws need no call.
#include <base/rnvandercorputrng.imp>

namespace Vn
{

template class RnVanDerCorputRng<float>;
template class RnVanDerCorputRng<double>;

}  // namespace Vn
