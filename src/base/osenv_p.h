// Private to the library.
#pragma once

namespace Vn::System
{

/// Whether the process has more rights than its caller, as a set-user-ID program has. The caller must not be able to
/// choose by variables which files such a program opens.
bool hasMoreRightsThanItsCaller();

/// Whether a variable belongs to a setting of the library itself, and not to one of its clients.
bool isOwnSetting(char const* name);

/// OsEnv::getVariable(), but null if the caller must not be trusted. For the library's own variables and TMPDIR.
char const* getOwnVariable(char const* name);

/// Sets, or for "NAME=" removes, one variable by `setting`, which is not null. False if the system refuses.
bool putEnvironmentSetting(char const* setting);

}  // namespace Vn::System
