// The instances of RnHammersleyBiRng. Their bodies are compiled here and nowhere else, with those
// of the generators inside them in sight.
#include <base/rnhammersleybirng.imp>

namespace Vn
{

template class RnHammersleyBiRng<float>;
template class RnHammersleyBiRng<double>;

}  // namespace Vn
