#include <base/rnhammersleybirng.imp>

namespace Vn
{

template class RnHammersleyBiRng<float>;
template class RnHammersleyBiRng<double>;

}  // namespace Vn
