// The two instances that the library exports, for programs that look them up there. Most programs don't: interval.h
// declares them extern for the library's own sources alone, since a declared instance isn't inlined, and most operations
// here are one or two instructions, less than a call. Programs get the same bits, as no operation has a product and a
// sum that a compiler could fuse.
#include <base/interval.h>

namespace Vn
{

template class Interval<float>;
template class Interval<double>;

}  // namespace Vn
