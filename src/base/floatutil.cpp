#include <base/floatutil.h>

namespace Vn
{

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
    if (!(x >= edge0))
        return low;
    if (x >= edge1)
        return high;
    const float t = (x - edge0) / (edge1 - edge0);
    return (3.0f - (t + t)) * t * t * (high - low) + low;
}

}  // namespace Vn
