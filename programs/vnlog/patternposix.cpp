// patternposix.cpp (Windows form: patternwindows.cpp)
//
// The C library's matcher takes no stack and no time that grow faster than the text does, as long as an expression has no
// references back, and ends at a given place, so a line needs no terminator.
#include "pattern.h"

#include <regex.h>
#include <stdexcept>

namespace vnlog
{
struct Pattern::Compiled
{
    ::regex_t expression;
};

Pattern::Pattern(std::string const& expression, bool ignoresCase) : _compiled(std::make_unique<Compiled>())
{
    const int flags = REG_EXTENDED | REG_NOSUB | (ignoresCase ? REG_ICASE : 0);
    const int error = ::regcomp(&_compiled->expression, expression.c_str(), flags);
    if (error == 0)
        return;
    char reason[200];
    ::regerror(error, &_compiled->expression, reason, sizeof reason);
    throw std::runtime_error("'" + expression + "' is no regular expression: " + reason);
}

Pattern::~Pattern()
{
    ::regfree(&_compiled->expression);
}

bool Pattern::isIn(std::string_view text) const
{
    ::regmatch_t range = {};
    range.rm_so = 0;
    range.rm_eo = static_cast<::regoff_t>(text.size());
    return ::regexec(&_compiled->expression, text.data(), 0, &range, REG_STARTEND) == 0;
}

}  // namespace vnlog
