// The instances of RnGaussianRng. Their bodies are compiled here and nowhere else, with the
// library's floating-point options, so that every program draws the same bits.
#include <base/rngaussianrng.imp>

namespace Vn
{

template class RnGaussianRng<float>;
template class RnGaussianRng<double>;

}  // namespace Vn
