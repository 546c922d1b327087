// patternwindows.cpp (POSIX form: patternposix.cpp)
//
// The C library has no matcher here. The standard library's usual one calls itself for each character and overflows the
// stack on a long line; its other one, which a flag of libstdc++ chooses, does not.
#include "pattern.h"

#include <regex>
#include <stdexcept>

namespace vnlog
{
struct Pattern::Compiled
{
    std::regex expression;
};

Pattern::Pattern(std::string const& expression, bool ignoresCase) : _compiled(std::make_unique<Compiled>())
{
    auto flags = std::regex::extended | std::regex::nosubs | std::regex_constants::__polynomial;
    if (ignoresCase)
        flags |= std::regex::icase;
    try {
        _compiled->expression.assign(expression, flags);
    } catch (std::regex_error const& error) {
        throw std::runtime_error("'" + expression + "' is no regular expression: " + error.what());
    }
}

Pattern::~Pattern() = default;

bool Pattern::isIn(std::string_view text) const
{
    return std::regex_search(text.begin(), text.end(), _compiled->expression);
}

}  // namespace vnlog
