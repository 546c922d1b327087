// The instances of RnHammersleyMultiRng: two and three dimensions, of which the ramp is one. Their
// bodies are compiled here and nowhere else.
#include <base/rnhammersleymultirng.imp>

namespace Vn
{

template class RnHammersleyMultiRng<float, 2>;
template class RnHammersleyMultiRng<float, 3>;
template class RnHammersleyMultiRng<double, 2>;
template class RnHammersleyMultiRng<double, 3>;

}  // namespace Vn
