// The instances of RnLecuyerUniformRng. Their bodies are compiled here and nowhere else, with the
// library's floating-point options, so that every program draws the same bits.
#include <base/rnlecuyeruniformrng.imp>

namespace Vn
{

template class RnLecuyerUniformRng<float>;
template class RnLecuyerUniformRng<double>;

}  // namespace Vn
