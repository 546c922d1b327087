// Assertions are part of every build: a release reports a wrong argument just as a debug build does. The last two
// functions are for clients; nothing in the library calls them.
#include <base/assertions.h>

#include <base/exinternalerror.h>
#include <base/exreasontext_p.h>

#include <cstring>

namespace Vn
{

/// `condition` is the source's own text of it; null counts as empty.
void Assertions::throwAssertionFailed(char const* file, int line, char const* condition)
{
    const ExReasonText text("Assertion '%s' failed.", ExReasonText::orEmpty(condition));
    throw ExInternalError(file, line, text.get());
}

void Assertions::throwSysAssertionFailed(char const* file, int line, char const* condition, int error)
{
    const ExReasonText text("Assertion '%s' failed, errno = %d (%s).", ExReasonText::orEmpty(condition), error,
                            std::strerror(error));
    throw ExInternalError(file, line, text.get());
}

/// In the place of abort(): the stack unwinds, and the failure is reported like any other.
void Assertions::throwProgramAborted(char const* file, int line)
{
    throw ExInternalError(file, line, "Program aborted.");
}

}  // namespace Vn
