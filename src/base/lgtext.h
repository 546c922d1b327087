#pragma once

#include <base/lgstandardoutput.h>
#include <base/lgstream.h>

#include <cstddef>
#include <cstring>
#include <exception>
#include <string_view>
#include <type_traits>
#include <utility>

namespace Vn
{

/// Puts texts that no zero ends into a queue's stream, for the operators below and for those of other headers.
///
///     VN_LOG(group, Vn::LgTypes::Warning, "lost " << name << " after " << retries << " tries: " << failure);
///
/// Here `name` is a std::string, `retries` a `long long` and `failure` an exception. Nothing is allocated, and each value
/// goes into the ring in one piece: if there isn't room for all of it, a "#" stands in its place.
///
/// On the thread that writes to the stream. Nothing throws. Tests: tests/base/lgtexttest.cpp.
class VN_BASE_EXPORT LgText
{
public:
    LgText() = delete;

    /// Writes the text as LgStream writes a `char const*`: all of it or a "#".
    ///
    ///     "half\0whole", with its zero  ->  half\0whole: a zero byte becomes a backslash and "0"
    ///     "", also without an address   ->  nothing, but textWritten is set
    ///
    /// A zero byte in the ring would end the message, and the rest would be taken for the next one.
    static LgStream& put(LgStream& stream, std::string_view text)
    {
        if (text.empty())
            return stream.write("", 0);
        if (std::memchr(text.data(), '\0', text.size()) != nullptr) [[unlikely]]
            return putWithZeros(stream, text);
        return stream.write(text.data(), text.size());
    }

    /// @{
    /// A number that `long` doesn't hold, in decimal.
    static LgStream& putNumber(LgStream& stream, long long value);
    static LgStream& putNumber(LgStream& stream, unsigned long long value);
    /// @}

private:
    static LgStream& putWithZeros(LgStream& stream, std::string_view text);
};

/// A function's type.
template <class T>
concept LgFunction = std::is_function_v<T>;

/// A type of objects that may change at any time.
template <class T>
concept LgVolatile = std::is_volatile_v<T>;

/// A std::exception, or what is made of one.
template <class T>
concept LgException = std::is_convertible_v<T const*, std::exception const*>;

/// @{
/// Writes the text: a std::string, a std::string_view, what converts to one. A zero byte in it becomes a backslash and "0", see
/// LgText::put().
inline LgStream& operator<<(LgStream& stream, std::string_view text)
{
    return LgText::put(stream, text);
}

inline LgStandardOutput& operator<<(LgStandardOutput& output, std::string_view text)
{
    return output.operator<<(text);
}
/// @}

/// @{
/// Writes the number in decimal: -9223372036854775808 to 18446744073709551615.
inline LgStream& operator<<(LgStream& stream, long long value)
{
    return std::in_range<long>(value) ? stream << static_cast<long>(value) : LgText::putNumber(stream, value);
}

inline LgStream& operator<<(LgStream& stream, unsigned long long value)
{
    return std::in_range<unsigned long>(value) ? stream << static_cast<unsigned long>(value)
                                               : LgText::putNumber(stream, value);
}
/// @}

/// @{
/// Writes the bytes of an UTF-8 text as they are; null writes nothing.
inline LgStream& operator<<(LgStream& stream, char8_t const* text)
{
    return stream << reinterpret_cast<char const*>(text);
}

inline LgStandardOutput& operator<<(LgStandardOutput& output, char8_t const* text)
{
    return output << reinterpret_cast<char const*>(text);
}

inline LgStream& operator<<(LgStream& stream, std::u8string_view text)
{
    return stream << std::string_view(reinterpret_cast<char const*>(text.data()), text.size());
}

inline LgStandardOutput& operator<<(LgStandardOutput& output, std::u8string_view text)
{
    return output << std::string_view(reinterpret_cast<char const*>(text.data()), text.size());
}
/// @}

/// Writes "nullptr", as the standard's streams do.
inline LgStream& operator<<(LgStream& stream, std::nullptr_t)
{
    return stream << "nullptr";
}

/// @{
/// Writes the address of a function, or of an object that may change at any time, as LgStream and the standard output write
/// that of any other object. Without these operators such a pointer would come out as "true".
template <LgFunction Function>
LgStream& operator<<(LgStream& stream, Function* address)
{
    return stream << reinterpret_cast<void const*>(address);
}

template <LgFunction Function>
LgStandardOutput& operator<<(LgStandardOutput& output, Function* address)
{
    return output << reinterpret_cast<void const*>(address);
}

template <LgVolatile T>
LgStream& operator<<(LgStream& stream, T* address)
{
    return stream << const_cast<void const*>(static_cast<void const volatile*>(address));
}

template <LgVolatile T>
LgStandardOutput& operator<<(LgStandardOutput& output, T* address)
{
    return output << const_cast<void const*>(static_cast<void const volatile*>(address));
}
/// @}

/// @{
/// Writes the exception's what().
template <LgException Exception>
LgStream& operator<<(LgStream& stream, Exception const& exception)
{
    return stream << static_cast<std::exception const&>(exception).what();
}

template <LgException Exception>
LgStandardOutput& operator<<(LgStandardOutput& output, Exception const& exception)
{
    return output << static_cast<std::exception const&>(exception).what();
}
/// @}

}  // namespace Vn
