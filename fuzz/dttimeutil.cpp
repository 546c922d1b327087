// Texts of any kind: a time or one of the stated exceptions, and a time that was read is written and read back the same.
#include <base/dtex.h>
#include <base/dttimeutil.h>
#include <base/rationalex.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace
{
bool isSame(Vn::DtTime const& a, Vn::DtTime const& b)
{
    return std::int64_t(a.getCount()) == std::int64_t(b.getCount()) && a.isRateEqual(b);
}

void check(Vn::DtTime const& time)
{
    const Vn::ArrayPtr<char> text = Vn::DtTimeUtil::getDtStringFromDtTime(time);
    if (std::strlen(text.get()) > 44)
        std::abort();
    // A denominator of -2147483648 is written as it is stored and turns the sign when it is read.
    if (time.getRate().getDenominator() > 0 && !isSame(time, Vn::DtTimeUtil::getDtTimeFromDtString(text)))
        std::abort();
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    // An allocation of its own, so that the address sanitizer sees a read behind the end.
    const std::unique_ptr<char[]> text(new char[size + 1]);
    std::memcpy(text.get(), data, size);
    text[size] = '\0';
    try {
        check(Vn::DtTimeUtil::getDtTimeFromDtString(text.get()));
    } catch (Vn::DtEx::DtStringError const& error) {
        if (error.getErrorCode() < 0 || error.getErrorCode() > 3)
            std::abort();
    } catch (Vn::DtEx::BadRate const&) {
    } catch (Vn::RationalEx::ExDenominatorZero const&) {
    }
    return 0;
}
