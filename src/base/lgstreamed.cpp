// A value with an operator<< for std::ostream on its way into a message.
//
// The operator writes to a stream over a buffer of our own. Up to 512 characters stay on the stack; a longer text moves to the
// heap, so short values cost no allocation and long ones aren't cut. The whole text then goes to the message at once, since a
// message's own stream can't take back what an operator that throws has written half.
//
// A std::ostream catches what its buffer throws and only sets badbit. The buffer therefore keeps the exception (there is one
// cause, no memory), and it is thrown again behind the operator, where the caller can see it. What the operator itself throws
// passes through as it is.
#include <base/lgstreamed.h>

#include <cstddef>
#include <exception>
#include <locale>
#include <ostream>
#include <streambuf>
#include <string>

namespace Vn
{
namespace
{
/// What is written to a stream: on the stack at first, on the heap from the first character that has no room there.
class Buffer : public std::streambuf
{
public:
    Buffer() { setp(_short, _short + sizeof _short); }

    std::string_view get()
    {
        if (_long.empty())
            return {_short, written()};
        moveToLong();
        return _long;
    }

    /// A formatted output function of the stream has caught it and set `badbit` instead.
    void throwFailure() const
    {
        if (_failure)
            std::rethrow_exception(_failure);
    }

protected:
    int_type overflow(int_type character) override
    {
        try {
            moveToLong();
        } catch (...) {
            _failure = std::current_exception();
            throw;
        }
        if (!traits_type::eq_int_type(character, traits_type::eof()))
            sputc(traits_type::to_char_type(character));
        return traits_type::not_eof(character);
    }

private:
    std::size_t written() const { return static_cast<std::size_t>(pptr() - pbase()); }

    void moveToLong()
    {
        _long.append(_short, written());
        setp(_short, _short + sizeof _short);
    }

    char _short[512];
    std::string _long;
    std::exception_ptr _failure;  ///< of overflow()
};

/// In the classic locale: a program's own would put separators into the numbers of a log, which nobody could search for.
template <class Target>
Target& putInto(Target& target, LgStreamedText::Write* write, void const* value)
{
    Buffer buffer;
    std::ostream stream(&buffer);
    stream.imbue(std::locale::classic());
    write(stream, value);
    buffer.throwFailure();
    return target << buffer.get();
}
}  // namespace

LgStream& LgStreamedText::put(LgStream& stream, Write* write, void const* value)
{
    return putInto(stream, write, value);
}

LgStandardOutput& LgStreamedText::put(LgStandardOutput& output, Write* write, void const* value)
{
    return putInto(output, write, value);
}

}  // namespace Vn
