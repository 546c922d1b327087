// lgfilewindows.cpp (Linux form: lgfileposix.cpp)
#include <base/lgfile_p.h>

#include <fstream>

namespace Vn
{

class LgFile::Buffer : public std::filebuf
{};

LgFile::LgFile(char const* path, bool isAppended) : std::ostream(nullptr), _buffer(std::make_unique<Buffer>())
{
    rdbuf(_buffer.get());
    if (_buffer->open(path, isAppended ? out | app : out) == nullptr)
        setstate(failbit);
}

LgFile::~LgFile() = default;

void LgFile::writeLine(char const* text, std::size_t size)
{
    if (bad() && _buffer->is_open())
        clear();
    write(text, static_cast<std::streamsize>(size)).flush();
}

}  // namespace Vn
