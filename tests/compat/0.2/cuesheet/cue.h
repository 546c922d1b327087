#pragma once

#include <base/dttime.h>

#include <stdexcept>
#include <string>

namespace CueSheet
{

/// A line, or a rate on the command line, that can't be read; the text says why.
class Unreadable : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// Within these limits no product of two rates and a count passes 64 bits, so that every comparison and the clock's
/// reading of every cue is exact.
constexpr int largestRateTerm = 100000;
constexpr int longestHours = 24;

/// A moment and what happens then.
struct Cue
{
    Vn::DtTime time;
    std::string name;
};

/// A rate by its name (pal, ntsc and so on) or as a fraction, 30000/1001.
Vn::Rational readRate(std::string const& text);

/// `TIME = NAME`, where the name and its sign may be missing, and the time is one of
///
///     1001 30000 1001       count and rate, as stream times are stored
///     12.345s               seconds, with up to five decimals
///     01:02:03:04 @ ntsc    hours, minutes, seconds and frames at a rate, none dropped
///
/// All of them are exact: no floating-point number is made of any. Throws Unreadable.
Cue readCue(std::string const& line);

/// Whether there is a cue in the line at all, and not only a remark or nothing.
bool holdsCue(std::string const& line);

/// The names that readRate() knows, with their rates, for the help.
std::string describeRates();

}  // namespace CueSheet
