// The instances of RnHistogramRng. Their bodies are compiled here and nowhere else, with the
// library's floating-point options, so that every program draws the same bits.
#include <base/rnhistogramrng.imp>

namespace Vn
{

template class RnHistogramRng<float>;
template class RnHistogramRng<double>;

}  // namespace Vn
