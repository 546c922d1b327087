// The rows of help, from the declarations: one for each declared option, by letter, with the variables of the environment
// and the defaults of the settings that it feeds; rows for the words; and one for each variable of the environment whose
// setting has no option. A setting of this library, whose handle begins with "Vn::", has no row: its variables are for
// developers, and --settings lists them.
//
// One option may feed several settings, and one setting may have several options. Help is read by option, so each entry collects
// what its settings have, each source once:
//
//     Option d, Environment REEL_DEPTH, Default 3     ->  -d LEVELS   how deep to look (REEL_DEPTH, default 3)
//     Environment REEL_ORDER, Default files           ->  REEL_ORDER  by what to sort (default files)
#include <base/inusageentries_p.h>

#include <base/incontextalias.h>
#include <base/indeclarations_p.h>
#include <base/invalueform.h>

#include <algorithm>
#include <string_view>

namespace Vn
{
namespace
{
using InUsageLayout::Row;
using Option = InContextAlias<InInitArg, 1>;
using Environment = InContextAlias<InInitEnv, 1>;
using Default = InContextAlias<InInitDef, 0>;

/// A linear search: an option feeds a few settings at most.
void addOnce(std::vector<std::string>& texts, std::string const& text)
{
    if (std::find(texts.begin(), texts.end(), text) == texts.end())
        texts.push_back(text);
}

/// Stands for a value in the place of the word that the description of an option lacks.
char const* placeholderOf(InVariableBase const& variable)
{
    const std::string_view name = InVariableForm(variable).getName();
    return name.ends_with("number") ? "NUMBER" : name == "time" ? "TIME" : "TEXT";
}

/// The variables of the environment and the defaults of one setting.
void addSources(InUsageEntry& entry, InVariableBase const& variable)
{
    entry.settings.push_back(&variable);
    for (InContextAliasBase const* alias : InDeclarations::getSources(variable)) {
        const std::string key = alias->getKey();
        if (dynamic_cast<Environment const*>(alias) != nullptr && key != entry.key) {
            addOnce(entry.sources, key);
            addOnce(entry.variables, key);
        } else if (dynamic_cast<Default const*>(alias) != nullptr && !key.empty())
            addOnce(entry.sources, "default " + key);
    }
}
}  // namespace

/// `text` with the sources behind it in parentheses; an entry without a description has these alone.
std::string InUsageEntry::describe(std::string const& text) const
{
    std::string all;
    for (std::string const& source : sources)
        all += (all.empty() ? "" : ", ") + source;
    if (all.empty())
        return text;
    return text + (text.empty() ? "(" : " (") + all + ")";
}

/// What a description says of its option itself ("-d LEVELS: ...") goes into the left column.
Row InUsageEntry::getRow(char letter) const
{
    Row row = InUsageLayout::describeOption(letter, takesValue() ? placeholder : "", description);
    row.right = describe(row.right);
    return row;
}

/// By the alphabet, a small letter before its capital one: a, A, b. Letters beyond ASCII come last, in the order of their codes.
std::tuple<int, int> InUsageEntries::LetterOrder::rankOf(char letter)
{
    const int code = static_cast<unsigned char>(letter);
    const bool isCapital = code >= 'A' && code <= 'Z';
    return {isCapital ? code - 'A' + 'a' : code, isCapital};
}

InUsageEntries::InUsageEntries()
{
    addOptions();
    for (InVariableBase const* variable : InDeclarations::getVariables())
        addVariable(*variable);
}

/// Also those that no variable has.
void InUsageEntries::addOptions()
{
    for (Option const* option : InDeclarations::getOptions()) {
        if (option->getKey()[0] == '\0')
            continue;
        InUsageEntry& entry = _options[option->getKey()[0]];
        if (entry.key.empty()) {
            entry.key = option->getKey();
            entry.description = option->getDescription();
        }
    }
}

/// Puts what the variable tells into the entries of its options, or else into that of its first variable of the environment.
void InUsageEntries::addVariable(InVariableBase const& variable)
{
    const std::vector<InContextAliasBase const*> sources = InDeclarations::getSources(variable);
    bool hasOption = false;
    for (InContextAliasBase const* alias : sources) {
        if (dynamic_cast<Option const*>(alias) == nullptr || alias->getKey()[0] == '\0')
            continue;
        InUsageEntry& entry = _options[alias->getKey()[0]];
        entry.placeholder = placeholderOf(variable);
        addSources(entry, variable);
        hasOption = true;
    }
    const auto first = std::find_if(sources.begin(), sources.end(), [](InContextAliasBase const* alias) {
        return dynamic_cast<Environment const*>(alias) != nullptr;
    });
    if (hasOption || isOwnSetting(variable.getHandle()) || first == sources.end())
        return;
    InUsageEntry entry;
    entry.key = (*first)->getKey();
    entry.description = (*first)->getDescription();
    addSources(entry, variable);
    _alone.push_back(entry);
}

/// Whether there is a variable in parentheses, so that a sentence about who wins has something to explain.
bool InUsageEntries::hasRanks() const
{
    return std::any_of(_options.begin(), _options.end(),
                       [](auto const& option) { return !option.second.variables.empty(); });
}

/// Words stand behind letters: those of every program first and last, the program's own in between.
std::vector<Row> InUsageEntries::getOptionRows(std::vector<InUsageState::Word> const& words) const
{
    std::vector<Row> rows;
    for (auto const& [letter, entry] : _options)
        rows.push_back(entry.getRow(letter));
    rows.push_back({hasOwnH() ? "--help" : "-h, --help", "this text"});
    for (InUsageState::Word const& word : words)
        rows.push_back({word.synopsis, word.description});
    rows.push_back({"--settings", "each setting with its value, and where that comes from"});
    rows.push_back({"--version", "the program and the libraries in it"});
    return rows;
}

std::vector<Row> InUsageEntries::getVariableRows() const
{
    std::vector<Row> rows;
    for (InUsageEntry const& entry : _alone)
        rows.push_back({entry.key, entry.describe(entry.description)});
    return rows;
}

}  // namespace Vn
