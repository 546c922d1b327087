#include <base/dtreftime.h>

#include <ostream>

namespace Vn
{

// The same form as DtTime::dump().
void DtRefTime::dump(std::ostream& stream) const
{
    stream << '(' << static_cast<std::int64_t>(_count) << " @ ";
    _rate.dump(stream);
    stream << ')';
}

std::ostream& operator<<(std::ostream& stream, DtRefTime const& time)
{
    time.dump(stream);
    return stream;
}

}  // namespace Vn
