#include <base/sleeper.h>

namespace Vn
{

template class InSingleton<Sleeper>;

Sleeper::Sleeper() = default;

Sleeper::~Sleeper() = default;

}  // namespace Vn
