// The texts are part of the interface, their spelling included. The standard base gets an empty text: what() is
// overridden and returns the reason, which ExBase holds without allocating.
#include <base/osmemoryarchex.h>

namespace Vn
{

// No code of the library raises these: they are for programs that need a known processor.
OsMemoryArchEx::OsMemoryArchEx(char const* file, int line) : ExBase(file, line) {}

OsMemoryArchEx::ExUnknownCPU::ExUnknownCPU(char const* file, int line)
    : std::runtime_error(""), OsMemoryArchEx(file, line)
{
    setReason("Unknown CPU Type: Can not compute memory architecture parameters.");
}

VN_EX_DEFINE_MEMBERS(OsMemoryArchEx::ExUnknownCPU);

OsMemoryArchEx::ExUnknownCPUBoard::ExUnknownCPUBoard(char const* file, int line)
    : std::runtime_error(""), OsMemoryArchEx(file, line)
{
    setReason("Unknown CPU Board Type: Can not compute memory architecture parameters.");
}

VN_EX_DEFINE_MEMBERS(OsMemoryArchEx::ExUnknownCPUBoard);

}  // namespace Vn
