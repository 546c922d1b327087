// The instances of both two-dimensional histograms, which know each other: addSample() spares
// RnUniformHistogramBi the virtual call.
#include <base/rnhistogrambi.imp>

namespace Vn
{

template class RnHistogramBi<float>;
template class RnHistogramBi<double>;
template class RnUniformHistogramBi<float>;
template class RnUniformHistogramBi<double>;

}  // namespace Vn
