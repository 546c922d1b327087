// The two instances that the library exports, for programs that look them up there. interval.h doesn't declare them
// extern: a declared instance isn't inlined, and most operations here are one or two instructions, less than a call. So
// each program compiles the members that it uses, to the same bits: none has a product and a sum that a compiler could
// fuse.
#include <base/interval.h>

#include <base/baseexport.h>

namespace Vn
{

template class VN_BASE_EXPORT Interval<float>;
template class VN_BASE_EXPORT Interval<double>;

}  // namespace Vn
