#include <base/rncosinehemisphericalrng_p.imp>

namespace Vn
{

template class RnCosineHemisphericalRng<float>;
template class RnCosineHemisphericalRng<double>;

}  // namespace Vn
