// The instances of both histograms over directions. They are no relatives; they share the functions
// at the top of the .imp.
#include <base/rnhistogramspherical.imp>

namespace Vn
{

template class RnHistogramHemispherical<float>;
template class RnHistogramHemispherical<double>;
template class RnHistogramSpherical<float>;
template class RnHistogramSpherical<double>;

}  // namespace Vn
