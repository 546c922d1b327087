// The standard base takes no text, so it keeps its own; what() of the whole object is the reason.
#include <base/exbadexception.h>

namespace Vn
{

/// Takes the place of an exception that a function isn't allowed to throw.
ExBadException::ExBadException(char const* file, int line) : ExBase(file, line)
{
    setReason("Invalid exception thrown.");
}

VN_EX_DEFINE_MEMBERS(ExBadException);

}  // namespace Vn
