// The powers of two are single instructions in the header; here is only the failure of log2Floor().
#include <base/pow2.h>

#include <base/assertions.h>

namespace Vn
{
namespace
{
constexpr char const* sourceName = "src/base/pow2";
}  // namespace

// Not in the header, so that log2Floor() stays small where it is inlined.
void Pow2::throwNoBitSet()
{
    Assertions::throwAssertionFailed(sourceName, __LINE__, "n != 0");
}

}  // namespace Vn
