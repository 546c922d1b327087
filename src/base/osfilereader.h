#pragma once

#include <base/baseexport.h>
#include <base/osfilepath.h>
#include <base/osfiletypes.h>

#include <cstdint>

namespace Vn
{

class OsFile;

/// Moves bytes from one open file to memory, a call of the system for each read (several for gigabytes) and no buffer
/// in between.
///
///     Vn::OsFileReader reader(Vn::OsFilePath("frame.exr"));
///     while (const std::uint32_t count = reader.read(buffer, sizeof buffer))
///         consume(buffer, count);
///
/// Others may read and write the file meanwhile. Opening never waits for the other end of a pipe. One thread at a time.
/// On a closed reader every operation throws ExSysErrorANSI, with whatever `errno` holds; what the system refuses is
/// ExSysErrorWindows. Tests: tests/base/osfilereadertest.cpp.
class VN_BASE_EXPORT OsFileReader
{
public:
    /// Opens. Throws OsFileEx::ExNullFilePath for an empty path; on Linux a directory is refused with `EISDIR`.
    explicit OsFileReader(OsFilePath const& path);
    explicit OsFileReader(OsFile const& file);

    /// Closes what is open.
    ~OsFileReader();

    OsFileReader(OsFileReader const&) = delete;
    OsFileReader& operator=(OsFileReader const&) = delete;

    /// The number of bytes read: `size`, or what was left of the file or at hand in a pipe; 0 at the end. Sizes beyond 32
    /// bits are refused.
    std::uint32_t read(void* buffer, unsigned long size);

    /// The low 32 bits of the new position. Any other `mode` counts from the start. A position before the start or
    /// beyond 32 bits is refused, and the position stays.
    std::int32_t seek(long offset, OsFileTypes::SeekMode mode);

    /// If the system has a failure to report, the reader stays open; also if the system no longer knows its handle.
    void close();

    OsFilePath const& getPath() const { return _path; }

private:
    std::int64_t performOpen();
    std::uint32_t performRead(void* buffer, unsigned long size);
    std::int32_t performSeek(long offset, OsFileTypes::SeekMode mode);
    void performClose();

    OsFilePath _path;
    std::int64_t _handle;  ///< -1 when closed
};

}  // namespace Vn
