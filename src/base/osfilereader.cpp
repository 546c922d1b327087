#include <base/osfilereader.h>

#include <base/exsyserror.h>
#include <base/osfile.h>
#include <base/osfileex.h>
#include <base/osfilehandle_p.h>

namespace Vn
{
namespace
{
constexpr char sourceName[] = "src/base/osfilereader";
constexpr char systemSourceName[] = "src/base/osfilereaderwindows";

void requireOpen(std::int64_t handle, int line)
{
    if (handle == System::closedHandle)
        throw ExSysErrorANSI(sourceName, line);
}
}  // namespace

OsFileReader::OsFileReader(OsFilePath const& path) : _path(path), _handle(System::closedHandle)
{
    if (_path.isEmpty())
        throw OsFileEx::ExNullFilePath(sourceName, __LINE__);
    _handle = performOpen();
}

OsFileReader::OsFileReader(OsFile const& file) : OsFileReader(file.getPath()) {}

OsFileReader::~OsFileReader()
{
    System::dropFile(_handle);
}

std::uint32_t OsFileReader::read(void* buffer, unsigned long size)
{
    requireOpen(_handle, __LINE__);
    return performRead(buffer, size);
}

std::int32_t OsFileReader::seek(long offset, OsFileTypes::SeekMode mode)
{
    requireOpen(_handle, __LINE__);
    return performSeek(offset, mode);
}

void OsFileReader::close()
{
    requireOpen(_handle, __LINE__);
    performClose();
}

std::int64_t OsFileReader::performOpen()
{
    const std::int64_t handle = System::openFile(_path.getChars(), 1);
    if (handle == System::closedHandle)
        throw ExSysErrorWindows(systemSourceName, __LINE__);
    return handle;
}

std::uint32_t OsFileReader::performRead(void* buffer, unsigned long size)
{
    const std::int64_t count = System::readFile(_handle, buffer, size);
    if (count < 0)
        throw ExSysErrorWindows(systemSourceName, __LINE__);
    return static_cast<std::uint32_t>(count);
}

std::int32_t OsFileReader::performSeek(long offset, OsFileTypes::SeekMode mode)
{
    std::int32_t position;
    if (!System::seekFile(_handle, offset, mode, position))
        throw ExSysErrorWindows(systemSourceName, __LINE__);
    return position;
}

void OsFileReader::performClose()
{
    if (!System::closeFile(_handle))
        throw ExSysErrorWindows(systemSourceName, __LINE__);
}

}  // namespace Vn
