// Specifications of log groups, of any text: parsing ends, and each group that it makes holds levels that a threshold
// can give.
#include <base/lgtypes.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <sstream>
#include <string>

namespace
{
void check(bool condition)
{
    if (!condition)
        std::abort();
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    std::string spec(reinterpret_cast<char const*>(data), size);
    spec = spec.c_str();
    std::ostringstream told;
    std::streambuf* const before = std::cout.rdbuf(told.rdbuf());
    Vn::LgMajorGroup::initialize(spec.c_str());
    std::cout.rdbuf(before);

    // One line for each pair that was refused, at most one pair for each "=" or for the rest.
    std::size_t lines = 0, pairs = 1;
    for (const char character : told.str())
        lines += character == '\n' ? 1 : 0;
    for (const char character : spec)
        pairs += character == '=' || character == '\n' ? 1 : 0;
    check(lines <= pairs + pairs);

    const std::string first = spec.substr(0, spec.find('='));
    const std::uint32_t levels = Vn::LgMajorGroup::getInstanceForName(first.c_str()).getLogLevels() & ~0x02u;
    check(levels == 0xC0 || levels == 0xE0 || levels == 0xF0 || levels == 0xF8 || levels == 0xFC);
    std::ostringstream all;
    Vn::LgMajorGroup::printAll(all);
    check(all.str().starts_with("Major Groups:\n"));
    Vn::LgMajorGroup::finalize();
    return 0;
}
