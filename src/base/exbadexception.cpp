#include <base/exbadexception.h>

namespace Vn
{

ExBadException::ExBadException(char const* file, int line) : ExBase(file, line)
{
    setReason("Invalid exception thrown.");
}

VN_EX_DEFINE_MEMBERS(ExBadException);

}  // namespace Vn
