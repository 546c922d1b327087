#pragma once

#include <base/baseexport.h>
#include <base/osfilepath.h>
#include <base/osfiletypes.h>

#include <cstdint>

namespace Vn
{

class OsFile;

/// Moves bytes from memory to one open file, a call of the system for each write (several for gigabytes) and no buffer
/// in between.
///
///     Vn::OsFileWriter writer(Vn::OsFilePath("frame.exr"), Vn::OsFileTypes::Permissions(), true);
///     if (writer.write(pixels, size) != size)
///         ...;    // the device is full
///     writer.close();
///
/// Others may read and write the file meanwhile. Opening never waits for the other end of a pipe. One thread at a time.
/// On a closed writer every operation throws ExSysErrorANSI, with whatever `errno` holds; what the system refuses is
/// ExSysErrorWindows. Tests: tests/base/osfilewritertest.cpp.
class VN_BASE_EXPORT OsFileWriter
{
public:
    /// Makes the file; one that is there is emptied at once, or with `failIfExists` refused by the system. Throws
    /// OsFileEx::ExNullFilePath for an empty path.
    OsFileWriter(OsFilePath const& path, OsFileTypes::Permissions const& permissions, bool failIfExists);
    OsFileWriter(OsFile const& file, OsFileTypes::Permissions const& permissions, bool failIfExists);

    /// Closes what is open. A failure that close() would report is lost here.
    ~OsFileWriter();

    OsFileWriter(OsFileWriter const&) = delete;
    OsFileWriter& operator=(OsFileWriter const&) = delete;

    /// The number of bytes written: less than `size` where the device is full, so compare them. Any other failure is
    /// thrown, also behind some gigabytes that were written. Sizes beyond 32 bits are refused.
    std::uint32_t write(void const* buffer, unsigned long size);

    /// As OsFileReader::seek().
    std::int32_t seek(long offset, OsFileTypes::SeekMode mode);

    /// Makes the file exactly `size` bytes long, shorter or longer, and leaves the position there. Sizes from 0xFFFFFFFF
    /// on are refused, on Windows those from 0x80000000 on.
    void reserve(unsigned long size);

    /// If the system has a failure to report, the writer stays open; also if the system no longer knows its handle.
    void close();

    OsFilePath const& getPath() const { return _path; }

private:
    std::int64_t performOpen(OsFileTypes::Permissions const& permissions, bool failIfExists);
    std::uint32_t performWrite(void const* buffer, unsigned long size);
    std::int32_t performSeek(long offset, OsFileTypes::SeekMode mode);
    void performReserve(unsigned long size);
    void performClose();

    OsFilePath _path;
    std::int64_t _handle;  ///< -1 when closed
};

}  // namespace Vn
