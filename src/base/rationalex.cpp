// The one exception of fractions. The standard base gets an empty text; what() returns the reason that ExBase keeps.
#include <base/rationalex.h>

namespace Vn
{

RationalEx::RationalEx(char const* file, int line) : ExBase(file, line) {}

RationalEx::ExDenominatorZero::ExDenominatorZero(char const* file, int line)
    : std::invalid_argument(""), RationalEx(file, line)
{
    setReason("Illegal zero denominator.");
}

VN_EX_DEFINE_MEMBERS(RationalEx::ExDenominatorZero);

}  // namespace Vn
