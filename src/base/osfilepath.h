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
///     path += Vn::OsFilePath("left") + "0001.exr";     // a path may have several elements, but no root
///
/// Nothing is normalised: case, doubled separators, ".." and a separator at the end stay as given. What needs a
/// resolved path asks the system at that moment, so it depends on the process's current directory. The bytes are in
/// the system's own encoding. A plain value that owns its text: distinct objects can be used from distinct threads.
/// Tests: tests/base/osfilepathtest.cpp.
class VN_BASE_EXPORT OsFilePath
{
public:
    /// The empty path.
    OsFilePath();

    /// A copy of the text; null makes an empty path. Not explicit, so a text serves where a path is asked for.
    OsFilePath(char const* path);

    /// @{
    /// A copy of its own; assignment to itself changes nothing.
    OsFilePath(OsFilePath const& other);
    ~OsFilePath() = default;

    OsFilePath& operator=(OsFilePath const& other);
    /// @}

    /// As set().
    OsFilePath& operator=(char const* path);

    /// Takes a copy of the bytes as they are. `path` may point into this path's own text. Throws ExInternalError for
    /// null and leaves the path as it is.
    void set(char const* path);

    /// The text, never null; valid until the path changes or is destroyed.
    char const* getChars() const { return _path; }

    /// Whether the text is "".
    bool isEmpty() const { return _path[0] == '\0'; }

    /// @{
    /// Decided by the text alone.
    ///
    ///     Linux:      "/tmp", "/"          absolute    "tmp", "", "C:/x"       relative
    ///     Windows:    "C:\x", "C:x"        absolute    "C:", "\temp", "C"      relative
    ///                 "\\host", "1:x"      absolute    "\\", "//host", "/a"    relative
    ///
    /// Windows looks for ":" as the second of at least three characters, or for two separators at the start of as
    /// many.
    bool isAbsolute() const;
    bool isRelative() const { return !isAbsolute(); }
    /// @}

    /// Order of two texts by their first differing bytes, taken as unsigned; null counts as "".
    ///
    ///     "a", "a"      ->   0
    ///     "A", "a"      ->  -1: case matters
    ///     "a/b", "a.b"  ->   1: separators are bytes like others
    ///
    static int compare(char const* a, char const* b);

    /// Writes the text and nothing else; returns the stream.
    std::ostream& dump(std::ostream& stream) const;

    /// @{
    /// Joins two paths with one separator; `+` leaves its left operand alone.
    ///
    ///     "a" + "b"      ->  "a/b"
    ///     "a/" + "b/c"   ->  "a/b/c"
    ///     "" + "b"       ->  "b"
    ///     "a" + ""       ->  "a/"
    ///     "a" + "/b"     ->  throws OsFileEx::ExIllegalPathConcat: the operand is absolute
    ///
    /// An exception leaves the path as it is.
    OsFilePath& operator+=(OsFilePath const& other);
    OsFilePath operator+(OsFilePath const& other) const;
    /// @}

    /// @{
    /// Appends a single element, as above.
    ///
    ///     "a" + "b.exr"  ->  "a/b.exr"
    ///     "a" + "b/c"    ->  throws OsFileEx::ExSeparatorNotAllowed
    ///     "a" + null     ->  throws ExInternalError
    ///
    OsFilePath& operator+=(char const* element);
    OsFilePath operator+(char const* element) const;
    /// @}

    /// The last element of the resolved path.
    ///
    ///     "pass/frame.exr"   ->  "frame.exr"
    ///     "pass/"            ->  ""
    ///     "."                ->  name of the current directory
    ///     ""                 ->  throws ExSysErrorWindows
    ///
    /// Resolving works on the text: ".." drops the element before it, symlinks are not followed, and nothing need
    /// exist. Throws ExSysErrorWindows if the current directory is gone, or the result exceeds 1,023 bytes on
    /// Windows.
    OsFilePath getBaseName() const;

    /// The resolved path up to its last separator, which is cut off.
    ///
    ///     "/pass/frame.exr"  ->  "/pass"
    ///     "/pass/"           ->  "/pass"
    ///     "/pass"            ->  "/"; on Windows "C:\pass" gives "C:"
    ///     "frame.exr"        ->  the current directory
    ///     "." and ".."       ->  the whole resolved path
    ///
    /// Throws as getBaseName().
    OsFilePath getDirectoryName() const;

    /// What follows the last dot of the base name; never null.
    ///
    ///     "a.tar.gz"   ->  "gz"
    ///     ".profile"   ->  "profile"
    ///     "a."         ->  ""
    ///     "dir.d/a"    ->  ""
    ///
    /// Throws as getBaseName().
    ArrayPtrRet<char> getExtension() const;

    /// The variable `HOME`, cut to 1,023 bytes; on Windows with each "/" turned into "\". Throws
    /// OsFileEx::ExHomeNotDefined if it is not set.
    static OsFilePath getHomeDir();

    /// The directory for temporary files, cut to 1,023 bytes. Linux: `TMPDIR`, or "/tmp" where that is not set, is
    /// empty, or must not be trusted because the program has more rights than its caller. Windows: as the system
    /// gives it, with a separator at the end; throws ExSysErrorWindows if it gives none.
    static OsFilePath getTempDir();

    /// "/"; on Windows the root of the current drive, such as "C:\".
    static OsFilePath getRootDir();

    /// "/", or "\" on Windows.
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
