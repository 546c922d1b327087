// A duration as its count with its unit, in the form of std::chrono's own operator<< of C++20, which the compilers that we
// build with don't have yet:
//
//     std::chrono::milliseconds(250)                   ->  250ms
//     std::chrono::duration<double>(1.5)               ->  1.5s
//     std::chrono::duration<int, std::ratio<1, 30>>(7) ->  7[1/30]s
//
// Nothing is converted, so a count is shown as exactly as the program has it. The unit is known by the two numbers of its
// ratio alone: the header hands these over, and so instantiates nothing for each type of duration.
#include <base/lgduration.h>

#include <base/lgshorttext_p.h>

#include <cstring>
#include <ratio>

namespace Vn
{
namespace
{
/// A ratio in lowest terms, as std::ratio has it, and its name.
struct Unit
{
    std::intmax_t numerator, denominator;  ///< of its seconds
    char const* name;
};

template <class Period>
constexpr Unit unitOf(char const* name)
{
    return {Period::num, Period::den, name};
}

constexpr Unit units[] = {
    unitOf<std::ratio<1>>("s"),    unitOf<std::milli>("ms"),       unitOf<std::micro>("us"),
    unitOf<std::nano>("ns"),       unitOf<std::pico>("ps"),        unitOf<std::femto>("fs"),
    unitOf<std::atto>("as"),       unitOf<std::centi>("cs"),       unitOf<std::deci>("ds"),
    unitOf<std::deca>("das"),      unitOf<std::hecto>("hs"),       unitOf<std::kilo>("ks"),
    unitOf<std::mega>("Ms"),       unitOf<std::giga>("Gs"),        unitOf<std::tera>("Ts"),
    unitOf<std::peta>("Ps"),       unitOf<std::exa>("Es"),         unitOf<std::ratio<60>>("min"),
    unitOf<std::ratio<3600>>("h"), unitOf<std::ratio<86400>>("d"),
};
}  // namespace

/// Twenty short comparisons at worst, beside the clock that the message has read: a table by value would buy nothing.
template <class Count>
void LgDurationText::writeAny(Count count, std::intmax_t numerator, std::intmax_t denominator)
{
    LgShortText<sizeof _text> text;
    text.add(count);
    Unit const* known = nullptr;
    for (Unit const& unit : units)
        if (unit.numerator == numerator && unit.denominator == denominator)
            known = &unit;
    if (known != nullptr)
        text.add(std::string_view(known->name));
    else {
        text.add('[').add(numerator);
        if (denominator != 1)
            text.add('/').add(denominator);
        text.add("]s");
    }
    _size = text.get().size();
    std::memcpy(_text, text.get().data(), _size);
}

void LgDurationText::write(double count, std::intmax_t numerator, std::intmax_t denominator)
{
    writeAny(count, numerator, denominator);
}

void LgDurationText::write(long long count, std::intmax_t numerator, std::intmax_t denominator)
{
    writeAny(count, numerator, denominator);
}

void LgDurationText::write(unsigned long long count, std::intmax_t numerator, std::intmax_t denominator)
{
    writeAny(count, numerator, denominator);
}

}  // namespace Vn
