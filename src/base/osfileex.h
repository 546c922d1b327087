#pragma once

#include <base/exbase.h>

#include <stdexcept>

namespace Vn
{

/// The exceptions of the file layer. A scope only: its classes share ExBase and no closer base.
///
///     catch (Vn::OsFileEx::ExInvalidPath const& failure) {
///         std::cerr << failure.getReason() << '\n';    // Invalid path: 'frame.exr'.
///     }
///
/// What the system itself refuses is an ExSysErrorWindows instead, with the system's code. Each class also derives
/// from a standard exception, whose what() is the reason. A message shows at most 256 bytes of a path; a null path is
/// empty.
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

/// An absolute path was joined to the end of another one: OsFilePath("a") + OsFilePath("/b").
class VN_BASE_EXPORT OsFileEx::ExIllegalPathConcat : public std::runtime_error, public ExBase
{
public:
    /// The reason is "Attempt to concatenate absolute path."
    ExIllegalPathConcat(char const* file, int line);

    VN_EX_MEMBERS();
};

/// A text that stands for a single path element contains the separator: OsFilePath("a") + "b/c".
class VN_BASE_EXPORT OsFileEx::ExSeparatorNotAllowed : public std::invalid_argument, public ExBase
{
public:
    /// The reason is "Separator not allowed in path elements."
    ExSeparatorNotAllowed(char const* file, int line);

    VN_EX_MEMBERS();
};

/// OsFilePath::getHomeDir() found no variable `HOME` in the environment.
class VN_BASE_EXPORT OsFileEx::ExHomeNotDefined : public std::runtime_error, public ExBase
{
public:
    /// The reason is "Cannot get home directory from the environment."
    ExHomeNotDefined(char const* file, int line);

    VN_EX_MEMBERS();
};

/// An operation that needs a path was given the empty one.
class VN_BASE_EXPORT OsFileEx::ExNullFilePath : public std::runtime_error, public ExBase
{
public:
    /// The reason is "File has null file path."
    ExNullFilePath(char const* file, int line);

    VN_EX_MEMBERS();
};

/// The file to be created exists already, a tree would be copied onto a file, or a file onto itself.
class VN_BASE_EXPORT OsFileEx::ExFileExists : public std::runtime_error, public ExBase
{
public:
    /// The reason is "File already exists."
    ExFileExists(char const* file, int line);

    VN_EX_MEMBERS();
};

/// A question about a path at which nothing exists.
class VN_BASE_EXPORT OsFileEx::ExInvalidPath : public std::invalid_argument, public ExBase
{
public:
    /// The reason for "frame.exr" is "Invalid path: 'frame.exr'."
    ExInvalidPath(char const* file, int line, char const* path);

    VN_EX_MEMBERS();
};

/// The target of a copy exists and may not be written. Only the class tells it from ExInvalidPath: the text is the
/// same.
class VN_BASE_EXPORT OsFileEx::ExPathNotWritable : public std::invalid_argument, public ExBase
{
public:
    /// The reason for "frame.exr" is "Invalid path: 'frame.exr'."
    ExPathNotWritable(char const* file, int line, char const* path);

    VN_EX_MEMBERS();
};

/// The file is on another machine, where transfers past the system's cache are impossible.
class VN_BASE_EXPORT OsFileEx::ExNoRemoteUnbuffered : public std::runtime_error, public ExBase
{
public:
    /// `path` is the file on Linux, and the root of its drive on Windows.
    ExNoRemoteUnbuffered(char const* file, int line, char const* path);

    VN_EX_MEMBERS();
};

}  // namespace Vn
