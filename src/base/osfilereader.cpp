// Each public operation checks that the file is open, and then a private one makes the call of the system:
//
//     read()  ->  performRead()  ->  System::readFile()        osfilehandlelinux.cpp, osfilehandlewindows.cpp
//
// The two layers throw with source names of their own. There is no buffer: programs that read in small pieces should
// read a block and take the pieces from it.
#include <base/osfilereader.h>

#include <base/exsyserror.h>
#include <base/osaccess_p.h>
#include <base/osfile.h>
#include <base/osfileex.h>
#include <base/osfilehandle_p.h>

namespace Vn
{
namespace
{
constexpr char sourceName[] = "src/base/osfilereader";
constexpr char systemSourceName[] = "src/base/osfilereaderwindows";

/// Throws ExSysErrorANSI for a closed handle.
// Intended: the class differs from that of the system's failures, and the code is whatever `errno` holds. Do not
// mend: callers tell their own mistakes from the system's by the class.
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

// These two are for FileCopy, which has no path: the file is opened in a directory that is held, and adopted after it.
OsFileReader::OsFileReader() : _handle(System::closedHandle) {}

void OsFileReader::adopt(std::int64_t handle)
{
    if (handle == System::closedHandle)
        throw ExSysErrorWindows(systemSourceName, __LINE__);
    _handle = handle;
}

// Not through close(), which throws.
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
    const std::int64_t handle = System::openFile(_path.getChars(), System::readAccess);
    if (handle == System::closedHandle)
        throw ExSysErrorWindows(systemSourceName, __LINE__);
    return handle;
}

// 0 is the end of the file and no failure.
std::uint32_t OsFileReader::performRead(void* buffer, unsigned long size)
{
    const std::int64_t count = System::readFile(_handle, buffer, size);
    if (count < 0)
        throw ExSysErrorWindows(systemSourceName, __LINE__);
    return static_cast<std::uint32_t>(count);
}

std::int32_t OsFileReader::performSeek(long offset, OsFileTypes::SeekMode mode)
{
    const std::optional<std::int32_t> position = System::seekFile(_handle, offset, mode);
    if (!position)
        throw ExSysErrorWindows(systemSourceName, __LINE__);
    return *position;
}

// The handle is kept if the system has not closed the file, so that the caller can try again.
void OsFileReader::performClose()
{
    const System::CloseResult result = System::closeFile(_handle);
    if (result != System::CloseResult::Kept)
        _handle = System::closedHandle;
    if (result != System::CloseResult::Closed)
        throw ExSysErrorWindows(systemSourceName, __LINE__);
}

}  // namespace Vn
