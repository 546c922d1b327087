#include <base/rnuniformsphericalrng_p.imp>

namespace Vn
{

template class RnUniformSphericalRng<float>;
template class RnUniformSphericalRng<double>;
template class RnUniformHemisphericalRng<float>;
template class RnUniformHemisphericalRng<double>;

}  // namespace Vn
