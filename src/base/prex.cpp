// The texts are part of the interface. Intended: numbers are printed with "%d", so from 2^31 on they show as
// negative. Do not mend: message texts stay as they are. The standard base gets an empty text; what() returns the
// reason of ExBase.
#include <base/prex.h>

#include <base/exreasontext_p.h>

namespace Vn
{

PrEx::PrEx(char const* file, int line) : ExBase(file, line) {}

PrEx::ExUnsupported::ExUnsupported(char const* file, int line) : std::runtime_error(""), PrEx(file, line)
{
    setReason("Functionality unsupported by profiling package.");
}

VN_EX_DEFINE_MEMBERS(PrEx::ExUnsupported);

// The cast makes the argument what "%d" expects; passing the unsigned number would be undefined behaviour.
PrEx::ExBadCounterIndex::ExBadCounterIndex(char const* file, int line, unsigned int index)
    : std::runtime_error(""), PrEx(file, line)
{
    setReason(ExReasonText("Request with illegal counter index %d.", static_cast<int>(index)).get());
}

VN_EX_DEFINE_MEMBERS(PrEx::ExBadCounterIndex);

// A null name counts as the empty one.
PrEx::ExBadCounterInstance::ExBadCounterInstance(char const* file, int line, char const* name)
    : std::runtime_error(""), PrEx(file, line)
{
    setReason(ExReasonText("Request with illegal counter instance name %s.", ExReasonText::orEmpty(name)).get());
}

VN_EX_DEFINE_MEMBERS(PrEx::ExBadCounterInstance);

PrEx::ExBadCounterObjectIndex::ExBadCounterObjectIndex(char const* file, int line, unsigned int index)
    : std::runtime_error(""), PrEx(file, line)
{
    setReason(ExReasonText("Request with illegal counter object index %d.", static_cast<int>(index)).get());
}

VN_EX_DEFINE_MEMBERS(PrEx::ExBadCounterObjectIndex);

}  // namespace Vn
