// The two interfaces for directions have no bodies but these. Their destructors are defined outside
// the classes, so the tables of virtual functions and the type information stand here, once for all
// modules. A catch or a typeid in another module then finds the same type.
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
