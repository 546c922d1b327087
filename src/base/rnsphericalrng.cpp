#include <base/rnsphericalrng.h>

namespace Vn
{

template <class T>
RnSphericalRng<T>::RnSphericalRng() = default;

template <class T>
RnSphericalRng<T>::~RnSphericalRng() = default;

template <class T>
RnHemisphericalRng<T>::RnHemisphericalRng() = default;

template <class T>
RnHemisphericalRng<T>::~RnHemisphericalRng() = default;

template class RnSphericalRng<float>;
template class RnSphericalRng<double>;
template class RnHemisphericalRng<float>;
template class RnHemisphericalRng<double>;

}  // namespace Vn
