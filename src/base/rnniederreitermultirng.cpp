#include <base/rnniederreitermultirng.imp>

namespace Vn
{

template class RnNiederreiterMultiRng<float>;
template class RnNiederreiterMultiRng<double>;

}  // namespace Vn
