// Texts of settings, of any bytes: what is read of a number is what the C library reads, cut to the type's range, and a text
// that is wholly a value is one by its form too.
#include <base/invalueform.h>

#include <cerrno>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>

namespace
{
using Vn::InValueForm;

void check(bool condition)
{
    if (!condition)
        std::abort();
}

constexpr char blanks[] = " \t\n\v\f\r";

/// The text without blanks around it.
std::string trimmed(std::string const& text)
{
    const std::size_t first = text.find_first_not_of(blanks);
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

template <class T>
void checkWhole(std::string const& text)
{
    errno = 0;
    const long long wide = std::strtoll(text.c_str(), nullptr, 10);
    const bool isBeyond =
        errno == ERANGE || wide < std::numeric_limits<T>::min() || wide > std::numeric_limits<T>::max();
    const T expected = !isBeyond  ? static_cast<T>(wide)
                       : wide < 0 ? std::numeric_limits<T>::min()
                                  : std::numeric_limits<T>::max();
    check(InValueForm<T>::read(text.c_str()) == expected);

    const std::string core = trimmed(text);
    const std::size_t digits = core.find_first_of("+-") == 0 ? 1 : 0;
    const bool isNumber = digits < core.size() && core.find_first_not_of("0123456789", digits) == std::string::npos;
    check(InValueForm<T>::isWhole(text.c_str()) == (isNumber && !isBeyond));
}

/// Forms that the C library reads and a setting does not.
bool isForeign(std::string const& core)
{
    return core.find_first_of("xXnN") != std::string::npos || core.find_first_of("iI") != std::string::npos;
}

template <class T, class Read>
void checkNumber(std::string const& text, Read read)
{
    const T value = InValueForm<T>::read(text.c_str());
    const bool isWhole = InValueForm<T>::isWhole(text.c_str());
    check(!std::isnan(value));
    const std::string core = trimmed(text);
    if (isForeign(core))
        return;
    char* end;
    T expected = read(text.c_str(), &end);
    if (std::isinf(expected))
        expected = std::copysign(std::numeric_limits<T>::max(), expected);
    check(value == expected);
    if (isWhole)
        check(end != text.c_str() && std::strspn(end, blanks) == std::strlen(end));
}

void checkTime(char const* text)
{
    using Form = InValueForm<Vn::InMilliseconds>;
    const std::int64_t value = static_cast<std::int64_t>(Form::read(text));
    if (Form::isWhole(text)) {
        const std::string again = std::to_string(value);
        check(Form::isWhole(again.c_str()) && static_cast<std::int64_t>(Form::read(again.c_str())) == value);
        check(Form::isWhole((again + " ms ").c_str()));
    }
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    const std::string text = std::string(reinterpret_cast<char const*>(data), size).c_str();
    checkWhole<int>(text);
    checkWhole<long>(text);
    checkNumber<double>(text, [](char const* from, char** end) { return std::strtod(from, end); });
    checkNumber<float>(text, [](char const* from, char** end) { return std::strtof(from, end); });
    checkTime(text.c_str());
    std::string lower = text;
    for (char& character : lower)
        if (character >= 'A' && character <= 'Z')
            character = static_cast<char>(character + 'a' - 'A');
    check(InValueForm<bool>::read(text.c_str()) == (lower != "false" && text != "0"));
    check(InValueForm<std::string>::read(text.c_str()) == text);
    return 0;
}
