// RnRng has no bodies but these. The destructor is the first virtual function defined outside the
// class, so the table of virtual functions and the type information stand here, once for all
// modules.
#include <base/rnrng.h>

namespace Vn
{

template <class T>
RnRng<T>::RnRng() = default;

template <class T>
RnRng<T>::~RnRng() = default;

template class RnRng<float>;
template class RnRng<double>;

}  // namespace Vn
