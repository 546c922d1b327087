#pragma once

#include "cue.h"

#include <iosfwd>
#include <vector>

namespace CueSheet
{

/// Cues at one rate, in order.
class Sheet
{
public:
    explicit Sheet(Vn::Rational const& rate) : _rate(rate) {}

    /// Throws Unreadable if the cue's rate and the sheet's have no product in 31 bits, which a conversion needs.
    void add(Cue const& cue);

    /// Sorts, and joins cues of the same instant under both names. Comparison is exact, whatever their rates.
    void order();

    /// A row for each cue, and what becomes of them in floating seconds.
    void print(std::ostream& stream) const;

    /// The cues in the form in which times are stored: a cue sheet again, with nothing lost.
    void printStored(std::ostream& stream) const;

private:
    Vn::DtTime atRate(Cue const& cue) const;

    Vn::Rational _rate;
    std::vector<Cue> _cues;
    std::size_t _duplicates = 0;
};

}  // namespace CueSheet
