// RnBiRng has no bodies but these. The destructor is defined outside the class, so the table of
// virtual functions and the type information stand here, once for all modules.
#include <base/rnbirng.h>

namespace Vn
{

template <class T>
RnBiRng<T>::RnBiRng() = default;

template <class T>
RnBiRng<T>::~RnBiRng() = default;

template class RnBiRng<float>;
template class RnBiRng<double>;

}  // namespace Vn
