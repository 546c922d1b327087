// Private to the files.
#pragma once

#include <base/osfiletypes.h>

#include <cstdint>
#include <optional>

/// Open files of the system. A function that fails leaves the system's error for the caller, who throws it with a
/// source name of its own.
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

/// Opens an existing file; `mode` is a sum of readAccess and writeAccess. Does not wait for the other end of a pipe.
/// closedHandle if that fails, also for a directory.
std::int64_t openFile(char const* path, int mode);

/// Creates a file for writing, or empties an existing one. closedHandle if that fails.
std::int64_t openNewFile(char const* path, OsFileTypes::Permissions const& permissions, bool failIfExists);

/// One call each, or as many as the system's limit takes. The number of bytes or -1; sizes beyond 32 bits are
/// refused. Fewer bytes than asked for are all there was: the rest of the file, or what a pipe or a terminal had.
std::int64_t readFile(std::int64_t handle, void* buffer, unsigned long size);

/// Goes on until all is written. A device that is full takes fewer bytes and is no failure.
std::int64_t writeFile(std::int64_t handle, void const* buffer, unsigned long size);

/// The low 32 bits of the new position. Nothing, and the position stays, for one beyond 32 bits.
std::optional<std::int32_t> seekFile(std::int64_t handle, long offset, OsFileTypes::SeekMode mode);

/// Sets the length, and the position to it.
bool setFileSize(std::int64_t handle, unsigned long size);

// The system's part in copying a file, from `source`, open for reading, to `target`, open for writing. Both do what
// the system can do by itself, and report no failure: the caller goes on with reading and writing up to the end of
// the source, and meets there what has stopped the system.

/// Lets the target share the blocks of the source, all of them. True if it does; both positions are then behind the
/// last byte. False, with nothing changed, if the system can't.
bool shareBlocks(std::int64_t source, std::int64_t target);

/// Copies from the position of the source to that of the target, which may be nothing or a part of the rest. Both
/// positions are then behind the last byte that was copied.
void copyRange(std::int64_t source, std::int64_t target);

enum class CloseResult
{
    Closed,
    ClosedWithError,  ///< the handle is gone, and a delayed write has failed
    Kept              ///< with an error; the handle is open, or the system doesn't know it
};

CloseResult closeFile(std::int64_t handle);

/// For destructors: closes an open handle and ignores errors.
void dropFile(std::int64_t handle) noexcept;

}  // namespace Vn::System
