// Private to inusagecompletion.cpp, inusageentries.cpp, inusageman.cpp and inusagereport.cpp.
#pragma once

#include <base/inusage_p.h>
#include <base/inusagelayout_p.h>

#include <map>
#include <string>
#include <tuple>
#include <vector>

namespace Vn
{

class InVariableBase;

/// What help says of one option, or of one variable of the environment without an option.
struct InUsageEntry
{
    std::string key;
    std::string description;
    char const* placeholder = "TEXT";
    std::vector<std::string> sources;    ///< "PALETTE_DEPTH", "default 3"; each once, by setting and rank
    std::vector<std::string> variables;  ///< those of the environment among them
    std::vector<InVariableBase const*> settings;

    bool takesValue() const { return key.size() > 1 && key[1] == ':'; }

    /// The description, with the sources in parentheses.
    std::string describe(std::string const& text) const;

    /// The option `letter`, and what it does.
    InUsageLayout::Row getRow(char letter) const;
};

/// What the process has declared, as help shows it; inusageentries.cpp says what has an entry.
class InUsageEntries
{
public:
    /// By the alphabet, a small letter before its capital one.
    struct LetterOrder
    {
        bool operator()(char left, char right) const { return rankOf(left) < rankOf(right); }
        static std::tuple<int, int> rankOf(char letter);
    };

    using Options = std::map<char, InUsageEntry, LetterOrder>;

    /// Asks the registers.
    InUsageEntries();

    Options const& getOptions() const { return _options; }

    /// Variables of the environment whose settings have no option.
    std::vector<InUsageEntry> const& getVariables() const { return _alone; }

    /// Whether an option has a variable of the environment beside it, so that people have to know which one counts.
    bool hasRanks() const;

    /// What to say then.
    static constexpr char ranks[] =
        "An option counts more than the variable in parentheses, and that more than the default.";

    /// Whether the program has declared an option `h`, which then isn't help.
    bool hasOwnH() const { return _options.contains('h'); }

    /// The options, then the words of every program with the program's own.
    std::vector<InUsageLayout::Row> getOptionRows(std::vector<InUsageState::Word> const& words) const;

    std::vector<InUsageLayout::Row> getVariableRows() const;

private:
    void addOptions();
    void addVariable(InVariableBase const& variable);

    Options _options;
    std::vector<InUsageEntry> _alone;
};

}  // namespace Vn
