#include <base/lgstreamed.h>

#include <cstddef>
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

protected:
    int_type overflow(int_type character) override
    {
        moveToLong();
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
};

template <class Target>
Target& putInto(Target& target, LgStreamedText::Write* write, void const* value)
{
    Buffer buffer;
    std::ostream stream(&buffer);
    stream.imbue(std::locale::classic());
    write(stream, value);
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
