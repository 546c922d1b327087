#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace vnlog
{

/// An extended regular expression of POSIX, over bytes.
class Pattern
{
public:
    /// Throws std::runtime_error with the reason for a text that is none.
    Pattern(std::string const& expression, bool ignoresCase);
    ~Pattern();
    Pattern(Pattern const&) = delete;
    Pattern& operator=(Pattern const&) = delete;

    /// Whether it matches any part of the text.
    bool isIn(std::string_view text) const;

private:
    struct Compiled;

    std::unique_ptr<Compiled> _compiled;
};

}  // namespace vnlog
