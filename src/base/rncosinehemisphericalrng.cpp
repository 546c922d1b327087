// The instances of RnCosineHemisphericalRng. Their bodies are compiled here and nowhere else, with
// the library's floating-point options, so that every program draws the same bits.
#include <base/rncosinehemisphericalrng.imp>

namespace Vn
{

template class RnCosineHemisphericalRng<float>;
template class RnCosineHemisphericalRng<double>;

}  // namespace Vn
