#pragma once

#include <base/arrayptr.h>
#include <base/baseexport.h>

#include <iosfwd>

namespace Vn
{

/// A path in the file system, as it was written.
///
///     Vn::OsFilePath path = Vn::OsFilePath::getTempDir();
///     path += "frames";                                // one element
///     path += Vn::OsFilePath("left") + "0001.exr";     // a path may bring several, but no root
///
/// Nothing is normalised: case, doubled separators, ".." and a separator at the end stay as given. What needs a resolved
/// path asks the system at that moment, so it depends on the process's current directory. Bytes in the system's own
/// encoding. A plain value: distinct objects from distinct threads. Tests: tests/base/osfilepathtest.cpp.
class VN_BASE_EXPORT OsFilePath
{
public:
    /// The empty path.
    OsFilePath();

    /// Null makes an empty path.
    OsFilePath(char const* path);

    OsFilePath(OsFilePath const& other);
    ~OsFilePath() = default;

    OsFilePath& operator=(OsFilePath const& other);

    /// Throws ExInternalError for null, and leaves the path as it is.
    OsFilePath& operator=(char const* path);

    /// Takes the bytes as they are, from within this path as well. Throws ExInternalError for null.
    void set(char const* path);

    /// The text; valid until the path changes.
    char const* getChars() const { return _path; }

    bool isEmpty() const { return _path[0] == '\0'; }

    /// By the text alone. On Windows a second character ":" or two separators in front, of three characters at least;
    /// on Linux a separator in front.
    bool isAbsolute() const;
    bool isRelative() const { return !isAbsolute(); }

    /// -1, 0 or 1 by the first bytes that differ, as unsigned ones. Case counts and separators are bytes like others.
    /// Null counts as empty.
    static int compare(char const* a, char const* b);

    /// Writes the path and nothing else.
    std::ostream& dump(std::ostream& stream) const;

    /// Appends behind a separator, if there isn't one and this path isn't empty; an empty operand adds the separator
    /// alone. Throws OsFileEx::ExIllegalPathConcat if `other` is absolute. What throws leaves the path as it is.
    OsFilePath& operator+=(OsFilePath const& other);
    OsFilePath operator+(OsFilePath const& other) const;

    /// The same for a single element: throws OsFileEx::ExSeparatorNotAllowed if `element` holds the separator, and
    /// ExInternalError for null.
    OsFilePath& operator+=(char const* element);
    OsFilePath operator+(char const* element) const;

    /// The last element of the resolved path; empty behind a separator at the end. Throws ExSysErrorWindows if the
    /// system can't resolve the path; an empty one never can be.
    OsFilePath getBaseName() const;

    /// The resolved path up to its last separator; the whole of it for "." and "..". Throws as getBaseName().
    OsFilePath getDirectoryName() const;

    /// What follows the last dot of the base name, or "". Throws as getBaseName().
    ArrayPtrRet<char> getExtension() const;

    /// From `HOME`, cut to 1,023 bytes; on Windows each "/" becomes the separator. Throws OsFileEx::ExHomeNotDefined.
    static OsFilePath getHomeDir();

    /// Where temporary files go, as the system gives it, cut to 1,023 bytes. Throws ExSysErrorWindows.
    static OsFilePath getTempDir();

    /// The root; on Windows that of the current drive.
    static OsFilePath getRootDir();

    /// What stands between two elements, as a text of one character.
    static char const* getSeparator();

private:
    static bool isAbsolute(char const* path);
    static void getHomeDir(char* buffer);
    static void getTempDir(char* buffer);
    static void getRootDir(char* buffer);

    void concatenate(char const* tail);

    ArrayPtr<char> _path;  ///< never null
};

/// Writes the path, as dump() does.
VN_BASE_EXPORT std::ostream& operator<<(std::ostream& stream, OsFilePath const& path);

}  // namespace Vn
