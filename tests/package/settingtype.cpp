// Doesn't compile: a setting has a type that the library can't read.
#include <base/invariable.h>

extern Vn::InPackageInit& package;
extern Vn::InContextAliasBase const& source;

Vn::InVariable<short> setting("setting", package, source);
