#include <base/rnmultirng.h>

namespace Vn
{

template <class T, int N>
RnMultiRng<T, N>::RnMultiRng() = default;

template <class T, int N>
RnMultiRng<T, N>::~RnMultiRng() = default;

template class RnMultiRng<float, 2>;
template class RnMultiRng<float, 3>;
template class RnMultiRng<float, 4>;
template class RnMultiRng<double, 2>;
template class RnMultiRng<double, 3>;
template class RnMultiRng<double, 4>;

}  // namespace Vn
