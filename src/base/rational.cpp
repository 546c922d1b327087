// The operations of a fraction that are too large to be inlined. All the rest is in the header: rates are made and
// compared in inner loops, where a call would take longer than the work.
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

// The terms and the value follow the stream's own format, so a caller chooses the number of digits.
void Rational::dump(std::ostream& stream) const
{
    stream << '(' << _numerator << '/' << _denominator << '=' << getDouble() << ')';
}

std::ostream& operator<<(std::ostream& stream, Rational const& value)
{
    value.dump(stream);
    return stream;
}

}  // namespace Vn
