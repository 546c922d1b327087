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
    /// @{
    /// As the stream writes them.
    LgStandardOutput& operator<<(char value) { return pass(value); }
    LgStandardOutput& operator<<(signed char value) { return pass(value); }
    LgStandardOutput& operator<<(unsigned char value) { return pass(value); }
    LgStandardOutput& operator<<(short value) { return pass(value); }
    LgStandardOutput& operator<<(unsigned short value) { return pass(value); }
    LgStandardOutput& operator<<(int value) { return pass(value); }
    LgStandardOutput& operator<<(unsigned int value) { return pass(value); }
    LgStandardOutput& operator<<(long value) { return pass(value); }
    LgStandardOutput& operator<<(unsigned long value) { return pass(value); }
    LgStandardOutput& operator<<(long long value) { return pass(value); }
    LgStandardOutput& operator<<(unsigned long long value) { return pass(value); }
    LgStandardOutput& operator<<(float value) { return pass(value); }
    LgStandardOutput& operator<<(double value) { return pass(value); }
    LgStandardOutput& operator<<(long double value) { return pass(value); }
    LgStandardOutput& operator<<(bool value) { return pass(value); }
    /// @}

    /// @{
    /// The text. Null writes nothing, as in LgStream; the stream itself would refuse all that follows.
    LgStandardOutput& operator<<(char const* text) { return text != nullptr ? pass(text) : *this; }
    LgStandardOutput& operator<<(char* text) { return *this << static_cast<char const*>(text); }
    LgStandardOutput& operator<<(ArrayPtr<char> const& text) { return *this << text.get(); }
    LgStandardOutput& operator<<(ArrayPtrRet<char> const& text) { return *this << text.get(); }
    /// @}

    /// @{
    /// The text, with a backslash and "0" for each zero byte, as lgtext.h writes it into a queue.
    LgStandardOutput& operator<<(std::string_view text);
    LgStandardOutput& operator<<(std::string const& text) { return *this << std::string_view(text); }
    /// @}

    /// Whatever else the stream takes. Exceptions are left to lgtext.h.
    template <class T>
    requires(requires(std::ostream& stream, T const& value) { stream << value; } &&
             !std::is_convertible_v<T const volatile*, std::exception const volatile*>) LgStandardOutput&
    operator<<(T const& value)
    {
        return pass(value);
    }

    /// Texts of wide characters, which would come out as addresses.
    template <class Character>
    requires(std::same_as<Character, wchar_t> || std::same_as<Character, char8_t> ||
             std::same_as<Character, char16_t> || std::same_as<Character, char32_t>) LgStandardOutput&
    operator<<(Character const* text) = delete;

private:
    template <class T>
    LgStandardOutput& pass(T const& value)
    {
        _stream << value;
        return *this;
    }

    std::ostream& _stream;
};

}  // namespace Vn
