#pragma once

#include <base/baseexport.h>

#include <cstdint>

namespace Vn
{

/// The small types that the file layer shares. A scope only: it has no instances.
///
///     reader.seek(0, Vn::OsFileTypes::FromEnd);
///
/// All are values without a lock. Tests: tests/base/osfiletypestest.cpp.
class VN_BASE_EXPORT OsFileTypes
{
public:
    OsFileTypes() = delete;

    /// What is at a path, of a symlink at its target. The value 2 does not occur.
    enum ElementType : int
    {
        RegularFile = 0,
        Directory = 1,  ///< whatever other attributes it has

        /// Linux: neither a regular file nor a directory, such as a device or a pipe. Windows: a file with one of the
        /// attributes system, temporary, sparse, reparse point, compressed, offline, encrypted; OsFile::isFile() is
        /// false for it.
        SpecialFile = 3
    };

    /// How the children of a directory are named.
    enum PathTypes : int
    {
        FullPath = 0,  ///< the directory's path and the child's name: "frames/0001.exr"
        LeafPath = 1   ///< the child's name: "0001.exr". Any value but 0 means this.
    };

    /// Where an offset is counted from. Any other value counts from the start.
    enum SeekMode : int
    {
        FromCurrent = 0,  ///< the position
        FromBegin = 1,    ///< the first byte
        FromEnd = 2       ///< behind the last byte
    };

    class Permissions;
    class UnbufferedInfo;
};

/// Who may do what with a file that is created. Each mode is a sum of 1 (read) and 2 (write); other bits are ignored.
///
///     const Vn::OsFileTypes::Permissions readableByAll;         // 3, 1, 1: rw-r--r--
///     const Vn::OsFileTypes::Permissions mineAlone(3, 0, 0);    // rw-------
///
/// Linux applies them under the process's file mode mask (umask); Windows ignores them.
class VN_BASE_EXPORT OsFileTypes::Permissions
{
public:
    /// Modes of the owner, the group and all others, kept as given.
    explicit Permissions(std::int32_t userMode = 3, std::int32_t groupMode = 1, std::int32_t otherMode = 1)
        : _userMode(userMode), _groupMode(groupMode), _otherMode(otherMode)
    {}

    /// @{
    /// The mode of one party, as it was given.
    std::int32_t getUserMode() const { return _userMode; }
    std::int32_t getGroupMode() const { return _groupMode; }
    std::int32_t getOtherMode() const { return _otherMode; }
    /// @}

private:
    std::int32_t _userMode;
    std::int32_t _groupMode;
    std::int32_t _otherMode;
};

/// What reading and writing past the system's cache would require, in bytes; the answer of
/// OsFile::getUnbufferedInfo(). The library itself always goes through the cache.
class VN_BASE_EXPORT OsFileTypes::UnbufferedInfo
{
public:
    /// @{
    /// All 0, or the given numbers unchecked.
    UnbufferedInfo() : UnbufferedInfo(0, 0, 0) {}
    UnbufferedInfo(std::uint32_t alignment, std::uint32_t blockSize, std::uint32_t maxSize)
        : _alignment(alignment), _blockSize(blockSize), _maxSize(maxSize)
    {}
    /// @}

    /// @{
    /// In bytes: alignment of the buffer, unit of a transfer (0 for either: none is required), most of one transfer.
    std::uint32_t getAlignment() const { return _alignment; }
    std::uint32_t getBlockSize() const { return _blockSize; }
    std::uint32_t getMaxSize() const { return _maxSize; }
    /// @}

private:
    std::uint32_t _alignment;
    std::uint32_t _blockSize;
    std::uint32_t _maxSize;
};

}  // namespace Vn
