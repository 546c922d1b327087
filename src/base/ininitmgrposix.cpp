// ininitmgrposix.cpp (Windows form: ininitmgrwindows.cpp)
#include <base/ininitmgr_p.h>

#include <unistd.h>

/// The C library's own block; no header of the language declares it.
extern "C" char** environ;

namespace Vn::System
{

/// Copies: the block may move with the next putenv().
std::vector<std::string> getEnvironmentEntries()
{
    std::vector<std::string> entries;
    if (environ == nullptr)  // what clearenv() leaves
        return entries;
    for (char** entry = environ; *entry != nullptr; ++entry)
        entries.emplace_back(*entry);
    return entries;
}

}  // namespace Vn::System
