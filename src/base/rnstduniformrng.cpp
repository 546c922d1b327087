// The instances of RnStdUniformRng. In one library, so that all of a program's modules call the
// same `rand()`: on Windows each C runtime has its own.
#include <base/rnstduniformrng.imp>

namespace Vn
{

template class RnStdUniformRng<float>;
template class RnStdUniformRng<double>;

}  // namespace Vn
