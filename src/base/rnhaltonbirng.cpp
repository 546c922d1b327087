// The instances of RnHaltonBiRng. Their bodies are compiled here and nowhere else, with those of
// the generators inside them in sight.
#include <base/rnhaltonbirng.imp>

namespace Vn
{

template class RnHaltonBiRng<float>;
template class RnHaltonBiRng<double>;

}  // namespace Vn
