// The instances of RnHistogramBiRng. Their bodies are compiled here and nowhere else, with the
// library's floating-point options, so that every program draws the same bits.
#include <base/rnhistogrambirng.imp>

namespace Vn
{

template class RnHistogramBiRng<float>;
template class RnHistogramBiRng<double>;

}  // namespace Vn
