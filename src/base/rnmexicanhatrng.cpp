#include <base/rnmexicanhatrng.imp>

namespace Vn
{

template class RnMexicanHatRng<float>;
template class RnMexicanHatRng<double>;

}  // namespace Vn
