#include <base/interval.h>

namespace Vn
{

template class Interval<float>;
template class Interval<double>;

}  // namespace Vn
