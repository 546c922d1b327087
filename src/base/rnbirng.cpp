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
