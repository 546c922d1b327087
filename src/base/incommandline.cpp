// The command line before the start, by the start's own rules.
//
// The start's parser (inoptionparser.cpp) walks the arguments with the letters of all declared options, and ends without
// a message at the first element that is no option, at an unknown letter, and behind an element that begins with two
// dashes. Here the same parser reads each element with options, one element at a time, with the same letters. So what
// is known, and what takes a value, is decided by the one rule. Between the elements this walk looks at what the parser
// passes over:
//
// 1. "--" ends the options. What follows is an operand, whatever it looks like. The start removes it, but where no option
//    is declared, it parses nothing: then handle() does.
// 2. A word (--help, --version, --settings, and those of InUsage::word()) is taken. The start must not see it, as it
//    would end its parsing there: handle() removes it.
// 3. Any other element with two dashes, and any letter that nobody declared, is a fault.
// 4. An option whose value is the next element takes that, whatever it begins with. If there is none, it is a fault.
// 5. The first operand ends the options. An option behind it would be an operand to the start, which is hardly what was
//    meant: a fault, unless "--" stood in front.
//
// Behind the walk stand the operands' number and the environment: a variable is looked at if its text would win.
//
// What the walk makes of some lines, where d takes a value and l none:
//
//     -ld 3 film    l, and d is 3; one operand
//     -d3 -- -l     d is 3; one operand, "-l"
//     -d            a fault: d lacks its value
//     film -l       a fault: an option behind an operand
//     --verbose     a fault: an unknown option
#include <base/incommandline_p.h>

#include <base/incontextalias.h>
#include <base/indeclarations_p.h>
#include <base/inoptionparser.h>
#include <base/invalueform.h>
#include <base/osterminal.h>

#include <algorithm>
#include <cstring>

namespace Vn
{
namespace
{
using Option = InContextAlias<InInitArg, 1>;
using Environment = InContextAlias<InInitEnv, 1>;
using Default = InContextAlias<InInitDef, 0>;

/// Signed, as the start's parser compares letters: those beyond ASCII are negative on every platform.
signed char letterOf(std::string_view key)
{
    return key.empty() ? '\0' : static_cast<signed char>(key[0]);
}

std::string quoted(std::string_view text)
{
    return "'" + OsTerminal::shown(text) + "'";
}

std::string optionOf(char letter)
{
    return {'-', letter};
}

/// "whole number" is one of many, "true or false" is not.
std::string withArticle(std::string const& name)
{
    return name.find(" or ") == std::string::npos ? "a " + name : name;
}

/// One that its type can't hold, then.
bool isNumber(std::string_view text)
{
    if (text.starts_with('-') || text.starts_with('+'))
        text.remove_prefix(1);
    return !text.empty() && text.find_first_not_of("0123456789") == text.npos;
}

bool looksLikeOption(std::string_view element)
{
    return element.size() > 1 && element[0] == '-';
}
}  // namespace

InCommandLine::InCommandLine(int argc, char const* const* argv, InUsageState const* state)
    : _argc(argv != nullptr ? argc : 0), _argv(argv), _state(state)
{
    // Of keys with one letter the first counts, as for the start.
    for (Option const* option : InDeclarations::getOptions())
        _keys.try_emplace(letterOf(option->getKey()), option->getKey());
    for (auto const& [letter, key] : _keys)
        _letters += key;
    walk();
    if (_state != nullptr)
        checkEnvironment();
}

char const* InCommandLine::getValue(char letter) const
{
    const auto found = _values.find(static_cast<signed char>(letter));
    return found != _values.end() ? found->second : nullptr;
}

/// A variable that runs has chosen already. Before the start the sources are asked as the start will ask them, the strongest first.
InCommandLine::Choice InCommandLine::choose(InVariableBase const& variable) const
{
    if (InContextAliasBase const* const chosen = InDeclarations::getChosen(variable))
        return {chosen, chosen->isValid() ? chosen->getValue() : nullptr};
    if (char const* const text = InDeclarations::findOverride(variable))
        return {nullptr, text};
    for (InContextAliasBase const* alias : InDeclarations::getSources(variable)) {
        char const* const key = alias->getKey();
        char const* text = key;  // of a default, and of an override that a start before took
        if (dynamic_cast<Option const*>(alias) != nullptr)
            text = getValue(key[0]);
        else if (dynamic_cast<Environment const*>(alias) != nullptr)
            text = InDeclarations::readVariable(key);
        if (text != nullptr)
            return {alias, text};
    }
    return {};
}

/// The rules at the top of this file, in their order. A word that the program looks at itself ends the walk without a count of
/// operands: what follows is the program's own language.
void InCommandLine::walk()
{
    for (; _index < _argc; ++_index) {
        const std::string_view element = elementAt(_index);
        if (!looksLikeOption(element))
            break;
        if (element == "--") {
            _endMark = _index;
            checkOperands(_index + 1);
            return;
        }
        if (_state != nullptr) {
            const auto known =
                std::find_if(_state->words.begin(), _state->words.end(),
                             [&](InUsageState::Word const& word) { return word.getWord() == element; });
            if (known != _state->words.end()) {
                if (known->isGiven == nullptr)
                    return;
                _boundWords.emplace_back(_index, &*known);
                continue;
            }
        }
        if (element.starts_with("--"))
            takeWord(element);
        else
            takeCluster();
    }
    const int firstOperand = _index;
    takeOptionsBehindOperand();
    checkOperands(firstOperand);
}

void InCommandLine::takeWord(std::string_view element)
{
    if (element == "--help")
        _wantsHelp = true;
    else if (element == "--version")
        _wantsVersion = true;
    else if (element == "--settings")
        _wantsSettings = true;
    else if (!takePage(element))
        addFault(InFault::UnknownOption, std::string(element), "unknown option " + OsTerminal::shown(element));
}

/// "--help=man" and "--help=bash", with ":NAME" behind it or not. Only those who package a program write these.
bool InCommandLine::takePage(std::string_view element)
{
    const struct
    {
        std::string_view word;
        Page page;
    } pages[] = {{"--help=man", ManPage}, {"--help=bash", BashCompletion}};
    for (auto const& [word, page] : pages) {
        if (!element.starts_with(word))
            continue;
        const std::string_view rest = element.substr(word.size());
        if (!rest.empty() && (rest[0] != ':' || rest.size() == 1))
            continue;
        _page = page;
        _pageName = rest.substr(rest.empty() ? 0 : 1);
        return true;
    }
    return false;
}

/// One element with one or more letters, and the element that is the last one's value.
void InCommandLine::takeCluster()
{
    const std::string_view element = elementAt(_index);
    // The parser doesn't write through the pointers.
    char empty[] = "";
    char* arguments[] = {empty, const_cast<char*>(_argv[_index])};
    InOptionParser parser(2, arguments, _letters.c_str());
    std::size_t at = 0;
    for (int option = parser.getOption(); option != -1 && ++at < element.size(); option = parser.getOption()) {
        const char letter = element[at];
        if (!_keys.contains(static_cast<signed char>(letter)) || option == '?') {
            if (letter == 'h') {
                _wantsHelp = true;
                continue;
            }
            // A letter beyond ASCII is a part of one.
            const std::string subject =
                static_cast<signed char>(letter) > 0 ? optionOf(letter) : std::string(element);
            const std::string place = subject == element ? "" : " in " + OsTerminal::shown(element);
            addFault(InFault::UnknownOption, subject, "unknown option " + OsTerminal::shown(subject) + place);
            return;
        }
        const bool takesValue = std::strchr(_letters.c_str(), letter)[1] == ':';
        char const* value = parser.getValue();
        if (takesValue && value == nullptr && _index + 1 < _argc)
            value = elementAt(++_index).data();
        takeOption(letter, takesValue, value);
        if (takesValue)
            return;
    }
}

/// The start gives the empty text to an option without a value, and to one that lacks it.
void InCommandLine::takeOption(char letter, bool takesValue, char const* value)
{
    _values[static_cast<signed char>(letter)] = value != nullptr ? value : "";
    if (!takesValue)
        return;
    if (value == nullptr)
        addFault(InFault::MissingValue, optionOf(letter), "a value is missing behind " + optionOf(letter));
    else if (_state != nullptr)
        checkValue(letter, value);
}

/// By each variable that has the option among its sources.
void InCommandLine::checkValue(char letter, char const* value)
{
    for (InVariableBase const* variable : InDeclarations::getVariables())
        for (InContextAliasBase const* alias : InDeclarations::getSources(*variable))
            if (dynamic_cast<Option const*>(alias) != nullptr && alias->getKey()[0] == letter)
                checkText(*variable, optionOf(letter), value);
}

/// What the program asks for names more than the type, so it comes first. One fault for a text is enough.
void InCommandLine::checkText(InVariableBase const& variable, std::string const& subject, char const* text)
{
    std::string wanted;
    for (InUsageState::Demand const& demand : _state->demands)
        if (demand.variable == &variable && wanted.empty() && !demand.isRight(text))
            wanted = demand.what;
    std::string instead = "not " + quoted(text);
    const InVariableForm kind(variable);
    if (wanted.empty() && !kind.isWhole(text)) {
        wanted = withArticle(kind.getName());
        if (isNumber(text))
            instead = "and " + quoted(text) + " is beyond its limits";
    }
    if (!wanted.empty())
        addFault(InFault::WrongValue, subject, subject + " takes " + wanted + ", " + instead);
}

/// What one writes behind an operand out of habit: help is given, anything else refused.
void InCommandLine::takeOptionsBehindOperand()
{
    const int first = _index;
    for (int i = first + 1; i < _argc; ++i) {
        const std::string_view element = elementAt(i);
        if (isBuiltInHelp(element))
            _wantsHelp = true;
        else if (looksLikeOption(element))
            addFault(InFault::WrongOperand, std::string(element),
                     OsTerminal::shown(element) + " stands behind " + quoted(elementAt(first)) +
                         "; options come first, and behind -- everything is an operand");
    }
}

void InCommandLine::checkOperands(int first)
{
    if (_state == nullptr)
        return;
    const int count = std::max(_argc - first, 0);
    if (count < _state->leastOperands)
        addFault(InFault::WrongOperand, "", _state->operandNames + " is missing");
    else if (_state->mostOperands >= 0 && count > _state->mostOperands)
        addFault(InFault::WrongOperand, std::string(elementAt(first + _state->mostOperands)),
                 "unexpected argument " + quoted(elementAt(first + _state->mostOperands)));
}

/// Where an option beats the variable, the variable's text does no harm. The library's own variables are meant for developers,
/// who write them in any form: "NAME= program" sets one to the empty text, and the start takes that.
void InCommandLine::checkEnvironment()
{
    for (InVariableBase const* variable : InDeclarations::getVariables()) {
        if (isOwnSetting(variable->getHandle()))
            continue;
        const Choice choice = choose(*variable);
        if (choice.text != nullptr && dynamic_cast<Environment const*>(choice.alias) != nullptr)
            checkText(*variable, choice.alias->getKey(), choice.text);
    }
}

void InCommandLine::addFault(InFault::Kind kind, std::string const& subject, std::string const& message)
{
    _faults.push_back({kind, subject, message});
}

bool InCommandLine::isBuiltInHelp(std::string_view element) const
{
    return element == "--help" || (element == "-h" && !_keys.contains('h'));
}

/// The start copies a null element as the empty text.
std::string_view InCommandLine::elementAt(int index) const
{
    return index < _argc && _argv[index] != nullptr ? _argv[index] : "";
}

}  // namespace Vn
