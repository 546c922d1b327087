#pragma once

#include <base/baseexport.h>
#include <base/osfilepath.h>
#include <base/osfiletypes.h>

#include <cstdint>

namespace Vn
{

class FileCopy;
class OsFile;

/// Reads bytes of one open file straight into memory: a system call for each read (several for gigabytes), no buffer
/// in between.
///
///     Vn::OsFileReader reader(Vn::OsFilePath("frame.exr"));
///     while (const std::uint32_t count = reader.read(buffer, sizeof buffer))
///         consume(buffer, count);
///
/// Open from construction to close() or destruction; it cannot be reopened. Other readers and writers may have the
/// file open meanwhile. One thread at a time.
///
///     the system refuses                  ExSysErrorWindows, with the system's code
///     any operation after close()         ExSysErrorANSI, with whatever `errno` holds at that moment
///
/// Tests: tests/base/osfilereadertest.cpp.
class VN_BASE_EXPORT OsFileReader
{
public:
    /// @{
    /// Opens the file at the path, positioned at its start. Throws OsFileEx::ExNullFilePath for an empty path; a
    /// directory is refused (EISDIR on Linux). Does not wait for a writer at the other end of a pipe; read() does.
    explicit OsFileReader(OsFilePath const& path);
    explicit OsFileReader(OsFile const& file);
    /// @}

    /// Closes the file if it is open. Throws nothing.
    ~OsFileReader();

    OsFileReader(OsFileReader const&) = delete;
    OsFileReader& operator=(OsFileReader const&) = delete;

    /// Reads up to `size` bytes and returns how many came.
    ///
    ///     enough left in the file    ->  size
    ///     3 bytes left, size 100     ->  3
    ///     at the end of the file     ->  0
    ///     from a pipe or terminal    ->  what is there; waits for the first byte
    ///
    /// Sizes beyond 32 bits are refused.
    std::uint32_t read(void* buffer, unsigned long size);

    /// Moves the position by `offset` bytes from the given origin; returns the low 32 bits of the new position.
    ///
    ///     seek(0, FromEnd)      ->  size of the file
    ///     seek(0, FromCurrent)  ->  the position as it is
    ///     seek(-1, FromBegin)   ->  throws ExSysErrorWindows, the position stays
    ///     past the end          ->  allowed; read() then returns 0
    ///
    /// A value that is no SeekMode counts from the start. A position that doesn't fit 32 bits is refused, and stays.
    std::int32_t seek(long offset, OsFileTypes::SeekMode mode);

    /// Closes the file. If the system reports a failure, throws and stays open, also if it no longer knows the
    /// handle; but on Linux, where the process has no descriptor left to try the closing with, it is closed in any case. A
    /// second call throws ExSysErrorANSI.
    void close();

    /// What was opened, as it was given.
    OsFilePath const& getPath() const { return _path; }

private:
    friend class FileCopy;

    OsFileReader();
    void adopt(std::int64_t handle);

    std::int64_t performOpen();
    std::uint32_t performRead(void* buffer, unsigned long size);
    std::int32_t performSeek(long offset, OsFileTypes::SeekMode mode);
    void performClose();

    OsFilePath _path;
    std::int64_t _handle;  ///< -1 when closed
};

}  // namespace Vn
