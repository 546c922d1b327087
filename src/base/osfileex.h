#pragma once

#include <base/exbase.h>

#include <stdexcept>

namespace Vn
{

/// The exceptions of the file layer. A scope only: they have no base of their own in common.
///
/// What the system refuses comes as ExSysErrorWindows instead, with the system's code. A path in a message is cut to
/// 256 bytes.
/// Tests: tests/base/osfiletypestest.cpp.
class VN_BASE_EXPORT OsFileEx
{
public:
    OsFileEx() = delete;

    class ExIllegalPathConcat;
    class ExSeparatorNotAllowed;
    class ExHomeNotDefined;
    class ExNullFilePath;
    class ExFileExists;
    class ExInvalidPath;
    class ExPathNotWritable;
    class ExNoRemoteUnbuffered;
};

/// An absolute path was joined to the end of another one.
class VN_BASE_EXPORT OsFileEx::ExIllegalPathConcat : public std::runtime_error, public ExBase
{
public:
    ExIllegalPathConcat(char const* file, int line);

    VN_EX_MEMBERS();
};

/// A single path element holds the separator.
class VN_BASE_EXPORT OsFileEx::ExSeparatorNotAllowed : public std::invalid_argument, public ExBase
{
public:
    ExSeparatorNotAllowed(char const* file, int line);

    VN_EX_MEMBERS();
};

/// The environment has no `HOME`.
class VN_BASE_EXPORT OsFileEx::ExHomeNotDefined : public std::runtime_error, public ExBase
{
public:
    ExHomeNotDefined(char const* file, int line);

    VN_EX_MEMBERS();
};

/// An operation on the empty path.
class VN_BASE_EXPORT OsFileEx::ExNullFilePath : public std::runtime_error, public ExBase
{
public:
    ExNullFilePath(char const* file, int line);

    VN_EX_MEMBERS();
};

/// What was to be made, or written, stands there already.
class VN_BASE_EXPORT OsFileEx::ExFileExists : public std::runtime_error, public ExBase
{
public:
    ExFileExists(char const* file, int line);

    VN_EX_MEMBERS();
};

/// Nothing stands at `path`.
class VN_BASE_EXPORT OsFileEx::ExInvalidPath : public std::invalid_argument, public ExBase
{
public:
    ExInvalidPath(char const* file, int line, char const* path);

    VN_EX_MEMBERS();
};

/// The target of a copy stands at `path` and may not be written.
class VN_BASE_EXPORT OsFileEx::ExPathNotWritable : public std::invalid_argument, public ExBase
{
public:
    ExPathNotWritable(char const* file, int line, char const* path);

    VN_EX_MEMBERS();
};

/// `path` lies on another machine, whose files can't be read or written past a cache.
class VN_BASE_EXPORT OsFileEx::ExNoRemoteUnbuffered : public std::runtime_error, public ExBase
{
public:
    ExNoRemoteUnbuffered(char const* file, int line, char const* path);

    VN_EX_MEMBERS();
};

}  // namespace Vn
