#pragma once

#include <base/osfiletypes.h>

#include <cstdint>

/// Open files of the system. What fails leaves the system's error standing for the caller, who throws it with a source
/// name of its own.
namespace Vn::System
{

constexpr std::int64_t closedHandle = -1;

/// The system's number for an origin, which is the same on both; any unknown mode counts from the start.
constexpr int originOf(OsFileTypes::SeekMode mode)
{
    switch (mode) {
    case OsFileTypes::FromCurrent:
        return 1;
    case OsFileTypes::FromEnd:
        return 2;
    default:
        return 0;
    }
}

/// Opens what exists; `mode` is a sum of 1 (read) and 2 (write). Never waits, and never a directory. closedHandle if
/// that fails.
std::int64_t openFile(char const* path, int mode);

/// Makes a file for writing, or empties the one that is there.
std::int64_t openNewFile(char const* path, OsFileTypes::Permissions const& permissions, bool failIfExists);

/// One call each, or as many as the system's limit takes. The number of bytes or -1; sizes beyond 32 bits are refused.
/// Fewer bytes than asked for are all there was: the rest of the file, or what a pipe or a terminal had.
std::int64_t readFile(std::int64_t handle, void* buffer, unsigned long size);

/// Goes on until all is written. A device that is full takes fewer bytes and is no failure.
std::int64_t writeFile(std::int64_t handle, void const* buffer, unsigned long size);

/// The low 32 bits of the new position go to `position`. Positions beyond 32 bits are refused and nothing moves.
bool seekFile(std::int64_t handle, long offset, OsFileTypes::SeekMode mode, std::int32_t& position);

/// Sets the length, and the position to it.
bool setFileSize(std::int64_t handle, unsigned long size);

/// False for what closing has to report; `handle` is then kept, open or unknown to the system, and else closedHandle.
bool closeFile(std::int64_t& handle);

/// For destructors: closes an open handle, whatever comes of it.
void dropFile(std::int64_t handle) noexcept;

}  // namespace Vn::System
