#pragma once

#include <base/baseexport.h>

#include <cstdint>

namespace Vn
{

/// The small types that the file layer shares. A scope only: it has no instances.
/// Tests: tests/base/osfiletypestest.cpp.
class VN_BASE_EXPORT OsFileTypes
{
public:
    OsFileTypes() = delete;

    /// What stands at a path. A special file on Linux is whatever is neither a regular file nor a directory; on Windows
    /// it is a file with one of the attributes system, temporary, sparse, reparse point, compressed, offline, encrypted.
    enum ElementType : int
    {
        RegularFile = 0,
        Directory = 1,
        SpecialFile = 3
    };

    /// How the children of a directory are named.
    enum PathTypes : int
    {
        FullPath = 0,  ///< behind the directory's own path
        LeafPath = 1   ///< alone
    };

    /// Where an offset is counted from.
    enum SeekMode : int
    {
        FromCurrent = 0,
        FromBegin = 1,
        FromEnd = 2
    };

    class Permissions;
    class UnbufferedInfo;
};

/// Who may do what with a file that is made. Each mode is a sum of 1 (read) and 2 (write).
///
///     const Vn::OsFileTypes::Permissions readableByAll;         // 3, 1, 1
///     const Vn::OsFileTypes::Permissions mineAlone(3, 0, 0);
///
/// Applied under the process's file mode mask on Linux; Windows doesn't look at it.
class VN_BASE_EXPORT OsFileTypes::Permissions
{
public:
    explicit Permissions(std::int32_t userMode = 3, std::int32_t groupMode = 1, std::int32_t otherMode = 1)
        : _userMode(userMode), _groupMode(groupMode), _otherMode(otherMode)
    {}

    std::int32_t getUserMode() const { return _userMode; }
    std::int32_t getGroupMode() const { return _groupMode; }
    std::int32_t getOtherMode() const { return _otherMode; }

private:
    std::int32_t _userMode;
    std::int32_t _groupMode;
    std::int32_t _otherMode;
};

/// What reading and writing past the system's cache would ask for, in bytes.
class VN_BASE_EXPORT OsFileTypes::UnbufferedInfo
{
public:
    UnbufferedInfo() : UnbufferedInfo(0, 0, 0) {}
    UnbufferedInfo(std::uint32_t alignment, std::uint32_t blockSize, std::uint32_t maxSize)
        : _alignment(alignment), _blockSize(blockSize), _maxSize(maxSize)
    {}

    std::uint32_t getAlignment() const { return _alignment; }
    std::uint32_t getBlockSize() const { return _blockSize; }
    std::uint32_t getMaxSize() const { return _maxSize; }

private:
    std::uint32_t _alignment;
    std::uint32_t _blockSize;
    std::uint32_t _maxSize;
};

}  // namespace Vn
