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
