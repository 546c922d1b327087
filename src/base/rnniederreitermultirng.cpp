// The instances of RnNiederreiterMultiRng. Their tables, some 20 kilobytes, are computed at compile
// time, here and nowhere else.
#include <base/rnniederreitermultirng.imp>

namespace Vn
{

template class RnNiederreiterMultiRng<float>;
template class RnNiederreiterMultiRng<double>;

}  // namespace Vn
