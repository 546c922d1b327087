// The instances of RnNumRecUniformRng, with their constant RM. Their bodies are compiled here and
// nowhere else, with the library's floating-point options, so that every program draws the same
// bits.
#include <base/rnnumrecuniformrng.imp>

namespace Vn
{

template class RnNumRecUniformRng<float>;
template class RnNumRecUniformRng<double>;

}  // namespace Vn
