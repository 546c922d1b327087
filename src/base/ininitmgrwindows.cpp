// ininitmgrwindows.cpp (Linux form: ininitmgrposix.cpp)
#include <base/ininitmgr_p.h>

#include <windows.h>

#include <memory>

namespace Vn::System
{
namespace
{
struct FreeEnvironment
{
    void operator()(char* block) const { ::FreeEnvironmentStringsA(block); }
};
}  // namespace

std::vector<std::string> getEnvironmentEntries()
{
    const std::unique_ptr<char, FreeEnvironment> block(::GetEnvironmentStringsA());
    std::vector<std::string> entries;
    if (!block)
        return entries;
    for (char const* entry = block.get(); *entry != '\0'; entry += entries.back().size() + 1)
        entries.emplace_back(entry);
    return entries;
}

}  // namespace Vn::System
