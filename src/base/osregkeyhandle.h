#pragma once

#include <base/baseexport.h>

// What the system's headers call HKEY and FILETIME.
struct HKEY__;
struct _FILETIME;

namespace Vn
{

/// An open key of the registry; Windows only. Nothing here throws: the results are the system's status codes, 0 for
/// success, and a key that couldn't be opened is null and makes each query fail.
///
///     Vn::OsRegKeyHandle key(HKEY_CURRENT_USER, "Software\\Family", 0, KEY_READ);
///     unsigned long type, size = sizeof text;
///     if (key.queryValue("Folder", nullptr, &type, text, &size) == 0)
///         use(text);
///
/// A copy shares the handle, and the first of the two to be destroyed closes it for both.
/// Tests: tests/base/osregkeyhandlewindowstest.cpp.
class VN_BASE_EXPORT OsRegKeyHandle
{
public:
    using Key = HKEY__*;

    OsRegKeyHandle(Key parent, char const* subKey, unsigned long options, unsigned long desiredAccess);
    OsRegKeyHandle(OsRegKeyHandle const&) = default;
    ~OsRegKeyHandle();

    /// What was held isn't closed.
    OsRegKeyHandle& operator=(OsRegKeyHandle const&) = default;

    Key getOSHandle() const { return _key; }

    /// As RegQueryInfoKeyA behind its first argument.
    long queryInfo(char* className, unsigned long* classLength, unsigned long* reserved, unsigned long* subKeys,
                   unsigned long* longestSubKey, unsigned long* longestClass, unsigned long* values,
                   unsigned long* longestValueName, unsigned long* longestValue,
                   unsigned long* securityDescriptorSize, _FILETIME* lastWriteTime) const;

    /// As RegQueryValueExA behind its first argument.
    long queryValue(char const* name, unsigned long* reserved, unsigned long* type, unsigned char* data,
                    unsigned long* size) const;

private:
    Key _key;
};

}  // namespace Vn
