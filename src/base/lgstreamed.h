#pragma once

#include <base/lgtext.h>

#include <iosfwd>

namespace Vn
{

/// A value that goes into a log message by its operator for `std::ostream`; made by streamed().
template <class T>
struct LgStreamed
{
    T const& value;  ///< not owned
};

/// Puts into a log message whatever has an `operator<<` for `std::ostream`.
///
///     VN_LOG(group, Vn::LgTypes::Warning, "no picture for " << Vn::streamed(error));    // a std::error_code
///
/// The value is written to a new stream of the "C" locale, so the message is the same whatever the program has set. The text
/// enters the ring in one piece, a "#" stands where it doesn't fit, and a zero byte becomes a backslash and "0". Texts of up to
/// 512 characters allocate nothing unless the operator does; making the stream takes about as long as the rest of the message.
/// The operator is looked for in the namespaces of the value's type, and must not throw.
///
/// Refers to `value`: use the result in the same expression.
/// Tests: tests/base/lgtexttest.cpp.
template <class T>
LgStreamed<T> streamed(T const& value)
{
    return {value};
}

/// The text of a value as a new std::ostream has it, in a queue's stream or on the standard output.
class VN_BASE_EXPORT LgStreamedText
{
public:
    LgStreamedText() = delete;

    /// Writes `value` to a stream.
    using Write = void(std::ostream& stream, void const* value);

    /// @{
    /// Calls `write` once and puts what it has written into the stream or onto the output. Throws what `write` throws, and
    /// `std::bad_alloc` for long texts; then nothing is put there.
    static LgStream& put(LgStream& stream, Write* write, void const* value);
    static LgStandardOutput& put(LgStandardOutput& output, Write* write, void const* value);
    /// @}

    /// The `write` of a LgStreamed<T>.
    template <class T>
    static void writeStreamed(std::ostream& stream, void const* value)
    {
        stream << static_cast<LgStreamed<T> const*>(value)->value;
    }
};

/// @{
/// Writes what the value's operator for `std::ostream` writes.
template <class T>
LgStream& operator<<(LgStream& stream, LgStreamed<T> const& streamed)
{
    return LgStreamedText::put(stream, LgStreamedText::writeStreamed<T>, &streamed);
}

template <class T>
LgStandardOutput& operator<<(LgStandardOutput& output, LgStreamed<T> const& streamed)
{
    return LgStreamedText::put(output, LgStreamedText::writeStreamed<T>, &streamed);
}
/// @}

}  // namespace Vn
