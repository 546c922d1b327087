// The same values in every run, unless the environment says otherwise.
#include <stdlib.h>

[[maybe_unused]] static const int isSeeded = ::setenv("RC_PARAMS", "seed=20261122 max_success=500", 0);
