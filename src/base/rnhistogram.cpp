// The instances of both one-dimensional histograms, which know each other: addSample() spares
// RnUniformHistogram the virtual call.
#include <base/rnhistogram.imp>

namespace Vn
{

template class RnHistogram<float>;
template class RnHistogram<double>;
template class RnUniformHistogram<float>;
template class RnUniformHistogram<double>;

}  // namespace Vn
