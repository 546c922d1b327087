#include <base/exinternalerror.h>

namespace Vn
{

ExInternalError::ExInternalError(char const* file, int line, char const* reason)
    : std::runtime_error(""), ExBase(file, line)
{
    setReason(reason);
}

VN_EX_DEFINE_MEMBERS(ExInternalError);

}  // namespace Vn
