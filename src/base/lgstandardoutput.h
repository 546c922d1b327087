#pragma once

#include <base/arrayptr.h>
#include <base/baseexport.h>

#include <concepts>
#include <exception>
#include <ostream>
#include <string>
#include <string_view>
#include <type_traits>

namespace Vn
{

/// Numbers, truth values and characters.
template <class T>
concept LgArithmetic = std::is_arithmetic_v<T>;

/// What only the stream knows how to write. Literals are told first: they have as many types as lengths, and the compiler would
/// look through the stream's operators for each.
template <class T>
concept LgPassedOn = !std::same_as<std::remove_extent_t<T>, char> && !LgArithmetic<T> &&
                     !std::is_convertible_v<T const volatile*, std::exception const volatile*> &&
                     requires(std::ostream & stream, T const& value)
{
    stream << value;
};

/// A character of a text that no `std::ostream` takes.
template <class T>
concept LgWideCharacter =
    std::same_as<T, wchar_t> || std::same_as<T, char8_t> || std::same_as<T, char16_t> || std::same_as<T, char32_t>;

/// What VN_LOG writes to while the logger isn't active: the standard output stream, as a type of the library's own.
///
///     Vn::LgStandardOutput output(std::cout);
///     output << "evicted " << 17 << " pages";
///
/// Takes whatever the stream takes, in the stream's own number format, and leaves the rest to free operators such as those of
/// lgtext.h. These are found at any site, since the type is of this namespace: for a std::chrono duration and a
/// `std::ostream` a site in another namespace would not find them.
///
/// A type of yours needs an operator for LgStream and either one for `std::ostream`, which this class then uses, or one for
/// this class.
///
/// Owns nothing; the stream must outlive it. As safe among threads as its stream. Tests: tests/base/lgtexttest.cpp.
class VN_BASE_EXPORT LgStandardOutput
{
public:
    /// Writes to `stream`.
    explicit LgStandardOutput(std::ostream& stream) : _stream(stream) {}

    /// The stream, for operators that only take streams. With it a message can hold such values too; what follows them must
    /// then be of the stream's types.
    operator std::ostream&() const { return _stream; }

    // By value: a reference would ask a class for the definition of a constant that it only declares.
    /// Numbers, truth values and characters, as the stream writes them. Wide characters have no form.
    template <LgArithmetic T>
    LgStandardOutput& operator<<(T value)
    {
        return pass(value);
    }

    /// @{
    /// The text. Null writes nothing, as in LgStream; the stream itself would refuse all that follows.
    LgStandardOutput& operator<<(char const* text) { return text != nullptr ? pass(text) : *this; }
    LgStandardOutput& operator<<(char* text) { return *this << static_cast<char const*>(text); }
    /// @}

    // Templates, here and below: for a function the compiler would look for ways to make a text of every value.
    /// @{
    /// The text, or nothing for null; the stream would write its address.
    template <std::same_as<char> T>
    LgStandardOutput& operator<<(ArrayPtr<T> const& text)
    {
        return *this << text.get();
    }
    template <std::same_as<char> T>
    LgStandardOutput& operator<<(ArrayPtrRet<T> const& text)
    {
        return *this << text.get();
    }
    /// @}

    /// @{
    /// The text, with a backslash and "0" for each zero byte, as lgtext.h writes it into a queue.
    template <class Traits>
    LgStandardOutput& operator<<(std::basic_string_view<char, Traits> text)
    {
        return write(std::string_view(text.data(), text.size()));
    }
    template <class Traits, class Allocator>
    LgStandardOutput& operator<<(std::basic_string<char, Traits, Allocator> const& text)
    {
        return write(std::string_view(text.data(), text.size()));
    }
    /// @}

    /// Whatever else the stream takes. Exceptions are left to lgtext.h.
    template <LgPassedOn T>
    LgStandardOutput& operator<<(T const& value)
    {
        return pass(value);
    }

    /// Texts of wide characters, which would come out as addresses.
    template <LgWideCharacter T>
    LgStandardOutput& operator<<(T const* text) = delete;

private:
    LgStandardOutput& write(std::string_view text);

    template <class T>
    LgStandardOutput& pass(T const& value)
    {
        _stream << value;
        return *this;
    }

    std::ostream& _stream;
};

}  // namespace Vn
