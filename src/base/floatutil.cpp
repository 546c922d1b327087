// The two functions that are more than one instruction or one call. The others are in the header.
#include <base/floatutil.h>

namespace Vn
{

// Here and not in the header, so that the library's compiler settings decide: fusing a product with a sum would
// change the last bit. Intended: the squares may overflow or vanish, unlike those of std::hypot(); do not mend.

float FloatUtil::hypot(float a, float b)
{
    return std::sqrt(a * a + b * b);
}

double FloatUtil::hypot(double a, double b)
{
    return std::sqrt(a * a + b * b);
}

float FloatUtil::smoothStep(float edge0, float edge1, float x, float low, float high)
{
    if (!(x >= edge0))  // true for not-a-number as well
        return low;
    if (x >= edge1)
        return high;
    // Here edge0 <= x < edge1, so the divisor is not zero.
    const float t = (x - edge0) / (edge1 - edge0);
    return (3.0f - (t + t)) * t * t * (high - low) + low;
}

}  // namespace Vn
