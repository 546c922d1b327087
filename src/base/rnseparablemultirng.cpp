// The instances of the three separable generators. Of RnSeparableMultiRng three dimensions are part
// of the interface, and no others.
#include <base/rnseparablemultirng.imp>

namespace Vn
{

template class RnSeparableBiRng<float>;
template class RnSeparableBiRng<double>;
template class RnAsymmetricalSeparableBiRng<float>;
template class RnAsymmetricalSeparableBiRng<double>;
template class RnSeparableMultiRng<float, 3>;
template class RnSeparableMultiRng<double, 3>;

}  // namespace Vn
