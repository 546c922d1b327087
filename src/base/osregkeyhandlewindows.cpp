// osregkeyhandlewindows.cpp (Windows only: no other system has a registry)
//
// Each member is one call. Intended: the result of opening is not examined. Do not mend: the key stays null then, and
// each query returns the system's error. Closing a null key is refused by the system without harm.
#include <base/osregkeyhandle.h>

#include <windows.h>

namespace Vn
{

OsRegKeyHandle::OsRegKeyHandle(Key parent, char const* subKey, unsigned long options, unsigned long desiredAccess)
    : _key(nullptr)
{
    ::RegOpenKeyExA(parent, subKey, options, desiredAccess, &_key);
}

// Intended: copies share the handle and each closes it. Do not mend: a copy is the handle's value, by the interface.
OsRegKeyHandle::~OsRegKeyHandle()
{
    ::RegCloseKey(_key);
}

long OsRegKeyHandle::queryInfo(char* className, unsigned long* classLength, unsigned long* reserved,
                               unsigned long* subKeys, unsigned long* longestSubKey, unsigned long* longestClass,
                               unsigned long* values, unsigned long* longestValueName, unsigned long* longestValue,
                               unsigned long* securityDescriptorSize, _FILETIME* lastWriteTime) const
{
    return ::RegQueryInfoKeyA(_key, className, classLength, reserved, subKeys, longestSubKey, longestClass, values,
                              longestValueName, longestValue, securityDescriptorSize, lastWriteTime);
}

// The narrow forms of the calls: names and texts are in the code page of the process.
long OsRegKeyHandle::queryValue(char const* name, unsigned long* reserved, unsigned long* type, unsigned char* data,
                                unsigned long* size) const
{
    return ::RegQueryValueExA(_key, name, reserved, type, data, size);
}

}  // namespace Vn
