#pragma once

#include <base/baseexport.h>

// What the system's headers call HKEY and FILETIME.
struct HKEY__;
struct _FILETIME;

namespace Vn
{

/// An open key of the registry; Windows only.
///
///     Vn::OsRegKeyHandle key(HKEY_CURRENT_USER, "Software\\Family", 0, KEY_READ);
///     unsigned long type, size = sizeof text;
///     if (key.queryValue("Folder", nullptr, &type, text, &size) == 0)
///         use(text);
///
/// Nothing here throws: results are the system's status codes, 0 for success. One thread at a time per object.
///
/// Beware of copies: a copy shares the handle, and whichever object is destroyed first closes it for both. Queries of
/// the other one then fail, or reach a key that was opened since. Pass the object by reference.
/// Tests: tests/base/osregkeyhandlewindowstest.cpp.
class VN_BASE_EXPORT OsRegKeyHandle
{
public:
    /// The system's HKEY, without its header.
    using Key = HKEY__*;

    /// Opens `subKey` below `parent`, as RegOpenKeyExA does with these arguments. If that fails, getOSHandle() is
    /// null and every query returns the system's error code.
    OsRegKeyHandle(Key parent, char const* subKey, unsigned long options, unsigned long desiredAccess);

    /// Shares the handle of the other object; see the warning above.
    OsRegKeyHandle(OsRegKeyHandle const&) = default;

    /// Closes the key, for its copies as well.
    ~OsRegKeyHandle();

    /// Shares the handle of the other object. The key that was held before stays open and is lost.
    OsRegKeyHandle& operator=(OsRegKeyHandle const&) = default;

    /// The system's handle, null if opening failed. It stays the object's.
    Key getOSHandle() const { return _key; }

    /// What the key contains: counts, and lengths in characters, as RegQueryInfoKeyA stores them. The arguments are
    /// that function's after its first, and each but `reserved`, which is null, may be null. Returns its result.
    long queryInfo(char* className, unsigned long* classLength, unsigned long* reserved, unsigned long* subKeys,
                   unsigned long* longestSubKey, unsigned long* longestClass, unsigned long* values,
                   unsigned long* longestValueName, unsigned long* longestValue,
                   unsigned long* securityDescriptorSize, _FILETIME* lastWriteTime) const;

    /// Reads one value, as RegQueryValueExA does with these arguments after its first.
    ///
    ///     data null, size given      ->  0, and `size` receives the size in bytes
    ///     data too small             ->  234 (more data), and the same
    ///     no such value              ->  2 (file not found)
    ///
    /// A text comes as it was stored, which may be without a terminator. Returns the system's result.
    long queryValue(char const* name, unsigned long* reserved, unsigned long* type, unsigned char* data,
                    unsigned long* size) const;

private:
    Key _key;
};

}  // namespace Vn
