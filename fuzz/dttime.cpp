// Times of any counts and rates, combined, compared, converted and read out: no sanitizer may say a word, and what is
// thrown is one of the stated exceptions.
#include <base/dtex.h>
#include <base/dttimeutil.h>
#include <base/rationalex.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace
{
struct Input
{
    std::int64_t left, right;
    std::int32_t leftNumerator, leftDenominator, rightNumerator, rightDenominator;
    double seconds;
};

void combine(Vn::DtTime const& a, Vn::DtTime const& b)
{
    const Vn::DtTime sum = a + b, difference = a - b, product = a * b;
    if (!sum.isRateEqual(difference) || !sum.isRateEqual(product) || !sum.isRateEqual(b + a))
        std::abort();
    if (b.convertRate(sum.getRate()).getCount() != 0) {
        const Vn::DtTime quotient = a / b, rest = a % b;
        if (!quotient.isRateEqual(rest))
            std::abort();
    }
}

void compare(Vn::DtTime const& a, Vn::DtTime const& b)
{
    if ((a == b) == (a != b) || (a < b) == (a >= b) || (a > b) == (a <= b) || (a < b && a > b))
        std::abort();
    Vn::Rational const& r = a.getRate();
    Vn::Rational const& s = b.getRate();
    // The plain formulas of the order, without a short way.
    if ((r < s) != (s.getDouble() - 1e-7 > r.getDouble()) || (r <= s) != (s.getDouble() + 1e-7 > r.getDouble()) ||
        (r > s) != (r.getDouble() > s.getDouble() + 1e-7) || (r >= s) != (r.getDouble() > s.getDouble() - 1e-7))
        std::abort();
}

void readOut(Vn::DtTime const& time, double seconds)
{
    time.getCount().getHours(time.getRate());
    time.getCount().getMinutes(time.getRate());
    time.getCount().getSeconds(time.getRate());
    Vn::DtTimeUtil::getDtTimeFromSeconds(time.getRate(), seconds);
    Vn::DtTimeUtil::getDtTimeFromSeconds(time.getRate(), static_cast<float>(seconds));
    Vn::DtTimeUtil::getInclusiveDtTimeIndexInterval(time, Vn::Interval<double>(seconds, -seconds));
    Vn::DtTimeUtil::getInclusiveDtTimeIndexInterval(time, Vn::Interval<float>(static_cast<float>(seconds)));
    for (int style : {-1, 0, 1, 2, 3})
        time.getCount().convert(time.getRate(), Vn::Rational(30000, 1001),
                                static_cast<std::float_round_style>(style));
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    Input input;
    if (size < sizeof input)
        return 0;
    std::memcpy(&input, data, sizeof input);
    try {
        const Vn::DtTime left(input.left, input.leftNumerator, input.leftDenominator);
        const Vn::DtTime right(input.right, input.rightNumerator, input.rightDenominator);
        compare(left, right);
        readOut(left, input.seconds);
        combine(left, right);
    } catch (Vn::DtEx::BadRate const&) {
    } catch (Vn::RationalEx::ExDenominatorZero const&) {
    }
    return 0;
}
