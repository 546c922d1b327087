// The instances of the uniform samplers of directions, on the sphere and on the hemisphere. Both
// name this source in their exceptions.
#include <base/rnuniformsphericalrng.imp>

namespace Vn
{

template class RnUniformSphericalRng<float>;
template class RnUniformSphericalRng<double>;
template class RnUniformHemisphericalRng<float>;
template class RnUniformHemisphericalRng<double>;

}  // namespace Vn
