#pragma once

namespace Vn::System
{

/// Sets, or for "NAME=" removes, one variable by `setting`, which is not null. False if the system refuses.
bool putEnvironmentSetting(char const* setting);

}  // namespace Vn::System
