#include <base/assertions.h>

#include <base/exinternalerror.h>
#include <base/exreasontext_p.h>

#include <cstring>

namespace Vn
{

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

void Assertions::throwProgramAborted(char const* file, int line)
{
    throw ExInternalError(file, line, "Program aborted.");
}

}  // namespace Vn
