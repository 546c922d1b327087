// Private to incommandline.cpp, inusage.cpp and inusagereport.cpp.
#pragma once

#include <base/inusage_p.h>

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace Vn
{

class InContextAliasBase;

/// A command line as the start will read it, and what the start would pass over in silence. incommandline.cpp says how
/// it is walked.
class InCommandLine
{
public:
    /// Walks. `state` has the words, operands and demands; without one there are none, and nothing but the values of
    /// options is meant.
    InCommandLine(int argc, char const* const* argv, InUsageState const* state);

    bool wantsHelp() const { return _wantsHelp; }

    /// What --help=man and --help=bash ask for.
    enum Page
    {
        NoPage,
        ManPage,
        BashCompletion
    };
    Page getPage() const { return _page; }

    /// The program's name on that page, from "--help=man:NAME"; "" if none is given.
    std::string const& getPageName() const { return _pageName; }

    bool wantsVersion() const { return _wantsVersion; }
    bool wantsSettings() const { return _wantsSettings; }

    /// Whether the program has declared an option `h`, which then isn't help.
    bool hasOwnH() const { return _keys.contains('h'); }

    std::vector<InFault> const& getFaults() const { return _faults; }

    /// Indices of the elements that are words bound to a flag, in order, with the word of each.
    std::vector<std::pair<int, InUsageState::Word const*>> const& getBoundWords() const { return _boundWords; }

    /// Index of the "--" that the start leaves among the operands, as it parses nothing if no option is declared; 0 if
    /// there is none.
    int getLeftEndMark() const { return _keys.empty() ? _endMark : 0; }

    /// What the start gives to an alias of that option: null if it isn't on the command line.
    char const* getValue(char letter) const;

    /// The source of a variable that has the highest rank of those with a value, and the text.
    struct Choice
    {
        InContextAliasBase const* alias = nullptr;  ///< null for a pending override
        char const* text = nullptr;                 ///< null if no source has a value
    };

    /// What runs has chosen already; for everything else the start's choice is made here.
    Choice choose(InVariableBase const& variable) const;

private:
    void walk();
    void takeCluster();
    void takeWord(std::string_view element);
    bool takePage(std::string_view element);
    void takeOptionsBehindOperand();
    void takeOption(char letter, bool takesValue, char const* value);
    void checkValue(char letter, char const* value);
    void checkOperands(int first);
    void checkEnvironment();
    void checkText(InVariableBase const& variable, std::string const& subject, char const* text);
    void addFault(InFault::Kind kind, std::string const& subject, std::string const& message);
    bool isBuiltInHelp(std::string_view element) const;
    std::string_view elementAt(int index) const;

    int _argc;
    char const* const* _argv;
    InUsageState const* _state;
    std::map<signed char, std::string> _keys;  ///< declared options by letter
    std::string _letters;                      ///< the option string
    std::map<signed char, char const*> _values;
    std::vector<InFault> _faults;
    std::vector<std::pair<int, InUsageState::Word const*>> _boundWords;
    int _index = 1;    ///< of the element being looked at
    int _endMark = 0;  ///< index of the "--" that ends the options
    Page _page = NoPage;
    std::string _pageName;
    bool _wantsHelp = false;
    bool _wantsVersion = false;
    bool _wantsSettings = false;
};

}  // namespace Vn
