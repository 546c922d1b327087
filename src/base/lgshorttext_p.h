// Private to lgduration.cpp and lgvalues.cpp.
#pragma once

#include <algorithm>
#include <charconv>
#include <concepts>
#include <cstddef>
#include <string_view>

namespace Vn
{

/// A text of a few numbers and words that is put together on the stack, so that a stream takes or refuses it whole.
///
///     LgShortText<64>().add('(').add(30000).add('/').add(1001).add(')').get()    // "(30000/1001)"
///
/// What goes beyond `capacity` characters is left out; the caller knows the longest text. Numbers have their form in the "C"
/// locale. Tests: tests/base/lgtexttest.cpp.
template <std::size_t capacity>
class LgShortText
{
public:
    LgShortText& add(char character) { return add(std::string_view(&character, 1)); }

    LgShortText& add(std::string_view text)
    {
        const std::size_t length = std::min(text.size(), capacity - _size);
        std::copy_n(text.data(), length, _text + _size);
        _size += length;
        return *this;
    }

    template <std::integral Integer>
    LgShortText& add(Integer value)
    {
        return addUpTo(std::to_chars(_text + _size, _text + capacity, value).ptr);
    }

    /// Six significant digits, as a new std::ostream writes them: 25, 29.97, 1.5, 1e+06, inf. 13 characters at the most.
    LgShortText& add(double value)
    {
        return addUpTo(std::to_chars(_text + _size, _text + capacity, value, std::chars_format::general, 6).ptr);
    }

    std::string_view get() const { return {_text, _size}; }

private:
    LgShortText& addUpTo(char const* end)
    {
        _size = static_cast<std::size_t>(end - _text);
        return *this;
    }

    char _text[capacity];
    std::size_t _size = 0;
};

}  // namespace Vn
