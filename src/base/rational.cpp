#include <base/rational.h>

#include <base/rationalex.h>

#include <ostream>

namespace Vn
{
namespace
{
constexpr char const* sourceName = "src/base/rational";
}  // namespace

// Not in the header: setValue() is inlined in many places, and the throw would make each of them larger.
void Rational::throwDenominatorZero()
{
    throw RationalEx::ExDenominatorZero(sourceName, __LINE__);
}

void Rational::dump(std::ostream& stream) const
{
    stream << '(' << _numerator << '/' << _denominator << '=' << getDouble() << ')';
}

}  // namespace Vn
