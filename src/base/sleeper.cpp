// What both platforms' forms have in common; getInstance() and create() are theirs.
#include <base/sleeper.h>

namespace Vn
{

// The one instance of the singleton's code and state, in the library; programs must not have copies of their own.
template class InSingleton<Sleeper>;

Sleeper::Sleeper() = default;

Sleeper::~Sleeper() = default;

}  // namespace Vn
