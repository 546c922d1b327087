// A completion for bash, from the rows of help: a function of bash alone, which needs no other package. What is a text in
// a declaration is a quoted word here.
//
// The function walks the words in front of the one to be completed as incommandline.cpp does, since "-ld" has to be known
// as an option that waits for its value. So the word to be completed stands in one of these states:
//
//     options    an option may come here, or an operand; "option" if the word begins with "-"
//     -d         the value of that option
//     operands   behind an operand, behind "--", or behind a word whose program looks at the rest by itself
//
// For a value there are the words that are right if a few are, folders or files by the name that stands for the value, and
// nothing for numbers. Bash splits a word at ":" and "="; what follows such a mark belongs to the word before.
#include <base/inusage.h>

#include <base/exreasontext_p.h>
#include <base/inusageentries_p.h>
#include <base/inusagepages_p.h>
#include <base/invalueform.h>
#include <base/osterminal.h>

#include <algorithm>
#include <ostream>

namespace Vn
{
namespace
{
using namespace InUsagePages;
using InUsageLayout::Row;

/// What may stand in the place of a value or an operand.
struct Values
{
    enum Kind
    {
        None,
        Words,
        Folders,
        Files
    };

    Kind kind;
    std::vector<std::string> words;
};

/// By the name that help has for it.
Values valuesNamed(std::string_view name)
{
    for (char const* word : {"FOLDER", "DIR"})
        if (name.find(word) != name.npos)
            return {Values::Folders, {}};
    return {name.empty() ? Values::None : Values::Files, {}};
}

/// The words that the program takes, if its demand lists them and finds each of them right.
std::vector<std::string> rightWords(std::vector<InUsageState::Demand> const& demands, InVariableBase const& setting)
{
    for (InUsageState::Demand const& demand : demands) {
        if (demand.variable != &setting)
            continue;
        std::vector<std::string> words = wordsOf(demand.what);
        if (std::all_of(words.begin(), words.end(), [&](auto const& word) { return demand.isRight(word.c_str()); }))
            return words;
    }
    return {};
}

/// By the first setting that says anything: its list of words, then its type. A number is nothing that a shell could guess, so it
/// offers nothing, which is better than the names of files.
Values valuesOf(InUsageEntry const& entry, std::string_view placeholder,
                std::vector<InUsageState::Demand> const& demands)
{
    for (InVariableBase const* setting : entry.settings) {
        const std::vector<std::string> words = rightWords(demands, *setting);
        if (!words.empty())
            return {Values::Words, words};
        const std::string_view type = InVariableForm(*setting).getName();
        if (type == "true or false")
            return {Values::Words, {"true", "false"}};
        if (type != "text")
            return {Values::None, {}};
    }
    return valuesNamed(placeholder);
}

/// One branch of the function's `case`. COMPREPLY is what bash offers; compgen finds names of folders and files by itself.
void printReplies(std::ostream& stream, Values const& values)
{
    switch (values.kind) {
    case Values::None:
        stream << "        ;;\n";
        return;
    case Values::Words:
        stream << "        for word in";
        for (std::string const& word : values.words)
            stream << " " << quotedForShell(word);
        stream << "; do\n"
                  "            [[ $word != \"$current\"* ]] || COMPREPLY+=(\"$word\")\n"
                  "        done\n"
                  "        ;;\n";
        return;
    case Values::Folders:
        stream << "        mapfile -t COMPREPLY < <(compgen -d -- \"$current\")\n        ;;\n";
        return;
    case Values::Files:
        stream << "        mapfile -t COMPREPLY < <(compgen -f -- \"$current\")\n        ;;\n";
        return;
    }
}

/// All that begins with a dash, in the order of help.
Values optionsOf(std::vector<Row> const& rows)
{
    Values options = {Values::Words, {}};
    for (Row const& row : rows) {
        std::string_view left = row.left;
        while (left.starts_with('-')) {
            const std::string_view word = left.substr(0, left.find_first_of(", "));
            options.words.emplace_back(word);
            left.remove_prefix(word.size());
            left.remove_prefix(left.starts_with(", ") ? 2 : left.size());
        }
    }
    return options;
}

/// The walk over the words in front of the current one, up to the state that this one stands in. The letters that take a value end a
/// cluster: in "-ld" all behind the `d` is its value.
void printWalk(std::ostream& stream, InUsageEntries const& entries, std::vector<InUsageState::Word> const& words)
{
    std::string letters;
    for (auto const& [letter, entry] : entries.getOptions())
        if (entry.takesValue())
            letters += letter;
    stream << R"(    local current=${COMP_WORDS[COMP_CWORD]} state=options word i j
    COMPREPLY=()
    for ((i = 1; i < COMP_CWORD; i++)); do
        word=${COMP_WORDS[i]}
        if [[ $word == [:=] ]]; then
            ((i += 1))
        elif [[ $state == -? ]]; then
            state=options
        elif [[ $state == options ]]; then
            case $word in
)";
    for (InUsageState::Word const& word : words)
        stream << "            " << quotedForShell(word.getWord()) << ") "
               << (word.isGiven != nullptr ? "" : "state=operands ") << ";;\n";
    stream << R"(            --) state=operands ;;
            --*) ;;
            -?*)
                for ((j = 1; j < ${#word}; j++)); do
                    if [[ )"
           << quotedForShell(letters) << R"( == *"${word:j:1}"* ]]; then
                        ((j + 1 < ${#word})) || state=-${word:j:1}
                        break
                    fi
                done
                ;;
            *) state=operands ;;
            esac
        fi
    done
    [[ $state != options || $current != -* ]] || state=option
)";
}

/// What may stand there in each state.
void printStates(std::ostream& stream, InUsageEntries const& entries, InUsageState const& usage)
{
    stream << "    case $state in\n    option)\n";
    printReplies(stream, optionsOf(entries.getOptionRows(usage.words)));
    for (auto const& [letter, entry] : entries.getOptions()) {
        if (!entry.takesValue())
            continue;
        const std::string left = entry.getRow(letter).left;
        const std::string_view placeholder = std::string_view(left).substr(std::min<std::size_t>(3, left.size()));
        stream << "    " << quotedForShell(std::string("-") + letter) << ")\n";
        printReplies(stream, valuesOf(entry, placeholder, usage.demands));
    }
    stream << "    *)\n";
    printReplies(stream, valuesNamed(usage.operandNames));
    stream << "    esac\n";
}
}  // namespace

/// The text in raw strings is the function as bash gets it; in between stand the parts that depend on the declarations.
std::ostream& InUsage::printBashCompletion(std::ostream& stream, char const* program) const
{
    const InUsageEntries entries;
    const std::string name = ExReasonText::orEmpty(program);
    const std::string function = "_" + identifierOf(name);
    stream << "# Completion of " << OsTerminal::shown(name)
           << " for bash, made of the program's own declarations.\n"
           << function << "()\n{\n";
    printWalk(stream, entries, _state->words);
    printStates(stream, entries, *_state);
    return stream << "}\ncomplete -o filenames -F " << function << " " << quotedForShell(name) << "\n";
}

}  // namespace Vn
