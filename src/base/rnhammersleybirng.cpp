#include <base/rnhammersleybirng_p.imp>

namespace Vn
{

template class RnHammersleyBiRng<float>;
template class RnHammersleyBiRng<double>;

}  // namespace Vn
