// Built like OsFileReader: a public operation checks, a private one makes the call (osfilehandle_p.h), and the two
// throw with source names of their own. There is no buffer, so what write() has returned is in the system's hands and
// survives the death of the process, though not that of the machine.
#include <base/osfilewriter.h>

#include <base/exsyserror.h>
#include <base/osfile.h>
#include <base/osfileex.h>
#include <base/osfilehandle_p.h>

namespace Vn
{
namespace
{
constexpr char sourceName[] = "src/base/osfilewriter";
constexpr char systemSourceName[] = "src/base/osfilewriterwindows";

/// Throws ExSysErrorANSI for a closed handle.
// Intended: the class differs from that of the system's failures, and the code is whatever `errno` holds. Do not
// mend: callers tell their own mistakes from the system's by the class.
void requireOpen(std::int64_t handle, int line)
{
    if (handle == System::closedHandle)
        throw ExSysErrorANSI(sourceName, line);
}
}  // namespace

OsFileWriter::OsFileWriter(OsFilePath const& path, OsFileTypes::Permissions const& permissions, bool failIfExists)
    : _path(path), _handle(System::closedHandle)
{
    if (_path.isEmpty())
        throw OsFileEx::ExNullFilePath(sourceName, __LINE__);
    _handle = performOpen(permissions, failIfExists);
}

OsFileWriter::OsFileWriter(OsFile const& file, OsFileTypes::Permissions const& permissions, bool failIfExists)
    : OsFileWriter(file.getPath(), permissions, failIfExists)
{}

// These two are for FileCopy, which has no path: the file is opened in a directory that is held, and adopted after it.
OsFileWriter::OsFileWriter() : _handle(System::closedHandle) {}

void OsFileWriter::adopt(std::int64_t handle)
{
    if (handle == System::closedHandle)
        throw ExSysErrorWindows(systemSourceName, __LINE__);
    _handle = handle;
}

// What closing reports is lost here: a destructor must not throw. Programs that care call close().
OsFileWriter::~OsFileWriter()
{
    System::dropFile(_handle);
}

std::uint32_t OsFileWriter::write(void const* buffer, unsigned long size)
{
    requireOpen(_handle, __LINE__);
    return performWrite(buffer, size);
}

// Beyond the end is allowed: the gap reads as zeros once something is written behind it.
std::int32_t OsFileWriter::seek(long offset, OsFileTypes::SeekMode mode)
{
    requireOpen(_handle, __LINE__);
    return performSeek(offset, mode);
}

void OsFileWriter::reserve(unsigned long size)
{
    requireOpen(_handle, __LINE__);
    performReserve(size);
}

// Here the system may report what it couldn't tell before, as a network file system does.
void OsFileWriter::close()
{
    requireOpen(_handle, __LINE__);
    performClose();
}

// An existing file is emptied here, before any write(), or refused.
std::int64_t OsFileWriter::performOpen(OsFileTypes::Permissions const& permissions, bool failIfExists)
{
    const std::int64_t handle = System::openNewFile(_path.getChars(), permissions, failIfExists);
    if (handle == System::closedHandle)
        throw ExSysErrorWindows(systemSourceName, __LINE__);
    return handle;
}

// A full device is no failure here: the count is then short, and the caller compares it with the size.
std::uint32_t OsFileWriter::performWrite(void const* buffer, unsigned long size)
{
    const std::int64_t count = System::writeFile(_handle, buffer, size);
    if (count < 0)
        throw ExSysErrorWindows(systemSourceName, __LINE__);
    return static_cast<std::uint32_t>(count);
}

// The interface has 32 bits: a position beyond them is refused by the system's form and not cut.
std::int32_t OsFileWriter::performSeek(long offset, OsFileTypes::SeekMode mode)
{
    const std::optional<std::int32_t> position = System::seekFile(_handle, offset, mode);
    if (!position)
        throw ExSysErrorWindows(systemSourceName, __LINE__);
    return *position;
}

// Sets the length both ways, and the position with it.
void OsFileWriter::performReserve(unsigned long size)
{
    if (!System::setFileSize(_handle, size))
        throw ExSysErrorWindows(systemSourceName, __LINE__);
}

// Kept: the file is still open, and may be closed again. ClosedWithError: it is gone, and what was written may be too.
void OsFileWriter::performClose()
{
    const System::CloseResult result = System::closeFile(_handle);
    if (result != System::CloseResult::Kept)
        _handle = System::closedHandle;
    if (result != System::CloseResult::Closed)
        throw ExSysErrorWindows(systemSourceName, __LINE__);
}

}  // namespace Vn
