// Option strings of the trace, of any text. They are taken, or refused with the name of the token; what comes before it
// has taken effect, and a line can be written.
#include <base/exinternalerror.h>
#include <base/trace.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
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

/// Writes the first line of the process, the only one that a list of the levels can stand before: the lengths of all
/// others are known, also where a single input is tried again.
extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    std::ostringstream stream;
    Vn::TraceManager::getInstance().getTrace().log(stream, "", 1);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    // Levels stay for ever, so names are short.
    std::string options(reinterpret_cast<char const*>(data), size < 200 ? size : 200);
    options = options.c_str();
    // This one would hold what is set for all inputs behind it.
    for (std::size_t place; (place = options.find("writeprotect")) != std::string::npos;)
        options[place] = 'x';

    Vn::Trace::setOptions("reset");
    try {
        Vn::Trace::setOptions(options.c_str());
    } catch (Vn::ExInternalError const& failure) {
        check(std::strncmp(failure.getReason(), "Unknown token \"", 15) == 0);
        check(failure.getReason()[15 + std::strcspn(failure.getReason() + 15, "\"")] == '"');
    }
    // A field can be as wide as memory, which is what was asked for.
    if (options.find("fnwidth") == std::string::npos) {
        std::ostringstream stream;
        Vn::TraceManager::getInstance().getTrace().log(stream, "/a/b/c.cpp", 1);
        check(stream.str().size() < 100);
    }
    return 0;
}
