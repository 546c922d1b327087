#include <base/rational.h>

#include <base/rationalex.h>

#include <ostream>

namespace Vn
{
namespace
{
constexpr char const* sourceName = "src/base/rational";
}  // namespace

void Rational::throwDenominatorZero()
{
    throw RationalEx::ExDenominatorZero(sourceName, __LINE__);
}

void Rational::dump(std::ostream& stream) const
{
    stream << '(' << _numerator << '/' << _denominator << '=' << getDouble() << ')';
}

}  // namespace Vn
