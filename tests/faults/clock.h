#pragma once

namespace VnTest
{

/// Makes the system's clock calls of this program and its libraries fail with `error` (an errno), until it is 0 again.
void failClockWith(int error);

}  // namespace VnTest
