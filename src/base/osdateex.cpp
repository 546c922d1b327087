// The standard base gets an empty text: what() is overridden and returns the reason, which ExBase holds without
// allocating.
#include <base/osdateex.h>

namespace Vn
{

OsDateEx::OsDateEx(char const* file, int line) : ExBase(file, line) {}

OsDateEx::ExInvalidDate::ExInvalidDate(char const* file, int line) : std::runtime_error(""), OsDateEx(file, line)
{
    setReason("Invalid date specified.");
}

VN_EX_DEFINE_MEMBERS(OsDateEx::ExInvalidDate);

}  // namespace Vn
