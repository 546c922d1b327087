// The library's own values in a message, in the form that their operator<< for std::ostream has:
//
//     Rational(30000, 1001)      ->  (30000/1001=29.97)
//     DtTime(7, 25, 1)           ->  (7 @ (25/1=25))
//     Interval<double>(0, 1.5)   ->  [0, 1.5]
//
// Each is made in a block on the stack, whose size is that of the longest value, and put into the ring as one text.
#include <base/lgvalues.h>

#include <base/dttime.h>
#include <base/lgshorttext_p.h>
#include <base/osfilepath.h>

#include <cstdint>

namespace Vn
{
namespace
{
// "(-2147483648/-2147483648=-1.23456e-308)" and "(-9223372036854775808 @ " and ")" in front and behind.
constexpr std::size_t longest = 80;
using Text = LgShortText<longest>;

void add(Text& text, Rational const& value)
{
    text.add('(').add(value.getNumerator()).add('/').add(value.getDenominator());
    text.add('=').add(value.getDouble()).add(')');
}
}  // namespace

LgStream& operator<<(LgStream& stream, Rational const& value)
{
    Text text;
    add(text, value);
    return stream << text.get();
}

LgStream& operator<<(LgStream& stream, DtTime const& time)
{
    Text text;
    text.add('(').add(static_cast<std::int64_t>(time.getCount())).add(" @ ");
    add(text, time.getRate());
    text.add(')');
    return stream << text.get();
}

LgStream& operator<<(LgStream& stream, OsFilePath const& path)
{
    return stream << path.getChars();
}

LgStream& writeInterval(LgStream& stream, double lower, double upper)
{
    Text text;
    text.add('[').add(lower).add(", ").add(upper).add(']');
    return stream << text.get();
}

}  // namespace Vn
