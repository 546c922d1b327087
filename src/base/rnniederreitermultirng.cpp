#include <base/rnniederreitermultirng_p.imp>

namespace Vn
{

template class RnNiederreiterMultiRng<float>;
template class RnNiederreiterMultiRng<double>;

}  // namespace Vn
