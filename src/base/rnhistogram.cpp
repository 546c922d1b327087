#include <base/rnhistogram_p.imp>

namespace Vn
{

template class RnHistogram<float>;
template class RnHistogram<double>;
template class RnUniformHistogram<float>;
template class RnUniformHistogram<double>;

}  // namespace Vn
