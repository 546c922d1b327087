// RnMultiRng has no bodies but these. The destructor is defined outside the class, so the table of
// virtual functions and the type information stand here, once for all modules. 4 dimensions serve
// RnNiederreiterMultiRng.
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
