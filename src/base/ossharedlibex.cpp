// The texts are part of the interface. Each variable part has a limit of its own, in bytes, so that a long path can't
// push the rest out of the message; what is cut off is not marked.
#include <base/ossharedlibex.h>

#include <base/exreasontext_p.h>

namespace Vn
{
namespace
{
// In bytes. Together with the fixed words they stay below the 1,023 characters of a reason.
constexpr int longestPath = 256;
constexpr int longestSystemText = 512;
constexpr int longestFunction = 64;
}  // namespace

OsSharedLibEx::OsSharedLibEx(char const* file, int line) : ExBase(file, line) {}

OsSharedLibEx::ExCantOpenLib::ExCantOpenLib(char const* file, int line, char const* path, char const* systemText)
    : OsSharedLibEx(file, line), std::runtime_error("")
{
    setReason(ExReasonText("Can't open dynamic library '%.*s': %.*s.", longestPath, ExReasonText::orEmpty(path),
                           longestSystemText, ExReasonText::orEmpty(systemText))
                  .get());
}

VN_EX_DEFINE_MEMBERS(OsSharedLibEx::ExCantOpenLib);

// The function comes first in the text and second in the arguments, as the path is what both classes have.
OsSharedLibEx::ExFunctionNotFound::ExFunctionNotFound(char const* file, int line, char const* path,
                                                      char const* function)
    : OsSharedLibEx(file, line), std::runtime_error("")
{
    setReason(ExReasonText("Function '%.*s' not found in dynamic library '%.*s'.", longestFunction,
                           ExReasonText::orEmpty(function), longestPath, ExReasonText::orEmpty(path))
                  .get());
}

VN_EX_DEFINE_MEMBERS(OsSharedLibEx::ExFunctionNotFound);

}  // namespace Vn
