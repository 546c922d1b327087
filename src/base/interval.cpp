// The two instances that the library holds; interval.h declares them extern, so no program compiles them again.
#include <base/interval.h>

namespace Vn
{

template class Interval<float>;
template class Interval<double>;

}  // namespace Vn
