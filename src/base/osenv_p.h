// Private to the library.
#pragma once

namespace Vn::System
{

/// Whether the process has more rights than its caller, who then mustn't tell it by variables which files to open.
bool hasMoreRightsThanItsCaller();

/// A variable of the library's own, or TMPDIR: OsEnv::getVariable(), and null where the caller has no say.
char const* getOwnVariable(char const* name);

/// Sets, or for "NAME=" removes, one variable by `setting`, which is not null. False if the system refuses.
bool putEnvironmentSetting(char const* setting);

}  // namespace Vn::System
