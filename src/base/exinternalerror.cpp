// The standard base gets an empty text, here and in all exceptions: what() returns ExBase's buffer.
#include <base/exinternalerror.h>

namespace Vn
{

/// A null reason leaves it empty.
ExInternalError::ExInternalError(char const* file, int line, char const* reason)
    : std::runtime_error(""), ExBase(file, line)
{
    setReason(reason);
}

VN_EX_DEFINE_MEMBERS(ExInternalError);

}  // namespace Vn
