#include <base/rnmexicanhatrng_p.imp>

namespace Vn
{

template class RnMexicanHatRng<float>;
template class RnMexicanHatRng<double>;

}  // namespace Vn
