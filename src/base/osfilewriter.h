#pragma once

#include <base/baseexport.h>
#include <base/osfilepath.h>
#include <base/osfiletypes.h>

#include <cstdint>

namespace Vn
{

class FileCopy;
class OsFile;

/// Writes bytes from memory straight to one open file: a system call for each write (several for gigabytes), no
/// buffer in between.
///
///     Vn::OsFileWriter writer(Vn::OsFilePath("frame.exr"), Vn::OsFileTypes::Permissions(), true);
///     if (writer.write(pixels, size) != size)
///         ...;    // the device is full
///     writer.close();
///
/// Open from construction to close() or destruction; it cannot be reopened. Other readers and writers may have the
/// file open meanwhile. One thread at a time.
///
///     the system refuses                  ExSysErrorWindows, with the system's code
///     any operation after close()         ExSysErrorANSI, with whatever `errno` holds at that moment
///
/// Tests: tests/base/osfilewritertest.cpp.
class VN_BASE_EXPORT OsFileWriter
{
public:
    /// @{
    /// Creates the file and opens it for writing.
    ///
    ///     nothing there                  ->  created, empty
    ///     a file, failIfExists false     ->  emptied at once, before any write()
    ///     a file, failIfExists true      ->  throws ExSysErrorWindows
    ///
    /// `permissions` apply to a new file, under the process's file mode mask; Windows ignores them. Throws
    /// OsFileEx::ExNullFilePath for an empty path. A pipe that nobody reads is refused on Linux, not waited for.
    OsFileWriter(OsFilePath const& path, OsFileTypes::Permissions const& permissions, bool failIfExists);
    OsFileWriter(OsFile const& file, OsFileTypes::Permissions const& permissions, bool failIfExists);
    /// @}

    /// Closes the file if it is open. A failure that close() would report is lost here.
    ~OsFileWriter();

    OsFileWriter(OsFileWriter const&) = delete;
    OsFileWriter& operator=(OsFileWriter const&) = delete;

    /// Writes `size` bytes at the position and returns how many the file took.
    ///
    ///     as a rule              ->  size
    ///     the device is full     ->  fewer, down to 0, and no exception: compare the result with size
    ///     any other failure      ->  throws; some bytes may have been written
    ///
    /// Sizes beyond 32 bits are refused.
    std::uint32_t write(void const* buffer, unsigned long size);

    /// As OsFileReader::seek(). A write past the end fills the gap with zeros.
    std::int32_t seek(long offset, OsFileTypes::SeekMode mode);

    /// Sets the length of the file and moves the position there.
    ///
    ///     reserve(0)        ->  the file is empty
    ///     reserve(100)      ->  100 bytes, cut or filled with zeros; the next write() appends
    ///     reserve(1 << 31)  ->  refused on Windows; Linux refuses 0xFFFFFFFF and above
    ///
    void reserve(unsigned long size);

    /// Closes the file, and reports what a delayed write ran into. If it throws, the writer stays open, also if the
    /// system no longer knows the handle; but on Linux, where the process has no descriptor left to try the closing with,
    /// it is closed in any case. A second call throws ExSysErrorANSI.
    void close();

    /// What was opened, as it was given.
    OsFilePath const& getPath() const { return _path; }

private:
    friend class FileCopy;

    OsFileWriter();
    void adopt(std::int64_t handle);

    std::int64_t performOpen(OsFileTypes::Permissions const& permissions, bool failIfExists);
    std::uint32_t performWrite(void const* buffer, unsigned long size);
    std::int32_t performSeek(long offset, OsFileTypes::SeekMode mode);
    void performReserve(unsigned long size);
    void performClose();

    OsFilePath _path;
    std::int64_t _handle;  ///< -1 when closed
};

}  // namespace Vn
