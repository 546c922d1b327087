// What InUsage prints: the usage text, the settings, and the versions.
//
// The usage text has a row for each declared option, by letter, with the variables of the environment and the defaults
// of the settings that it feeds; rows for the words; a row for each variable of the environment whose setting has no
// option; and the program's notes. A setting of this library, whose handle begins with "Vn::", has no row: its variables
// are for developers, and --settings lists them.
#include <base/inusage.h>

#include <base/dbgbuildinfo.h>
#include <base/dbgbuildinfoex.h>
#include <base/dbgbuildinfomgr.h>
#include <base/exreasontext_p.h>
#include <base/incommandline_p.h>
#include <base/incontextalias.h>
#include <base/indeclarations_p.h>
#include <base/inusagelayout_p.h>
#include <base/invalueform.h>
#include <base/objptr.h>
#include <base/osterminal.h>

#include <algorithm>
#include <exception>
#include <map>
#include <ostream>
#include <sstream>
#include <tuple>

namespace Vn
{
namespace
{
using InUsageLayout::Row;
using Option = InContextAlias<InInitArg, 1>;
using Environment = InContextAlias<InInitEnv, 1>;
using Default = InContextAlias<InInitDef, 0>;

/// What the usage text says of one option, or of one variable without an option.
struct Entry
{
    std::string key;
    std::string description;
    char const* placeholder = "TEXT";
    std::vector<std::string> sources;  ///< variables of the environment, then defaults; each once
    bool hasVariable = false;          ///< whether one of them is a variable of the environment

    void addSource(std::string const& source)
    {
        if (std::find(sources.begin(), sources.end(), source) == sources.end())
            sources.push_back(source);
    }

    /// The description, with the further sources in parentheses.
    std::string describe(std::string const& text) const
    {
        std::string all;
        for (std::string const& source : sources)
            all += (all.empty() ? "" : ", ") + source;
        if (all.empty())
            return text;
        return text + (text.empty() ? "(" : " (") + all + ")";
    }
};

/// By the alphabet, a small letter before its capital one.
struct LetterOrder
{
    bool operator()(char left, char right) const { return rankOf(left) < rankOf(right); }

    static std::tuple<int, int> rankOf(char letter)
    {
        const int code = static_cast<unsigned char>(letter);
        const bool isCapital = code >= 'A' && code <= 'Z';
        return {isCapital ? code - 'A' + 'a' : code, isCapital};
    }
};

using Options = std::map<char, Entry, LetterOrder>;

/// Stands for a value in the place of the word that the description of an option lacks.
char const* placeholderOf(InVariableBase const& variable)
{
    const std::string_view name = InVariableForm(variable).getName();
    return name.ends_with("number") ? "NUMBER" : name == "time" ? "TIME" : "TEXT";
}

/// What the variable reads, for people. What its type doesn't understand as a whole stands in quotes, as a text does.
std::string readingOf(InVariableBase const& variable, char const* text)
{
    const InVariableForm kind(variable);
    const std::string_view name = kind.getName();
    if (name == "true or false")
        return InValueForm<bool>::read(text) ? "true" : "false";
    // Blanks may stand around a number, line ends among them.
    const std::string shown = OsTerminal::shown(text);
    return name != "text" && kind.isWhole(text) ? shown : "'" + shown + "'";
}

/// All declared options, also those that no variable has.
Options getOptions()
{
    Options options;
    for (Option const* option : InDeclarations::getOptions()) {
        if (option->getKey()[0] == '\0')
            continue;
        Entry& entry = options[option->getKey()[0]];
        if (entry.key.empty()) {
            entry.key = option->getKey();
            entry.description = option->getDescription();
        }
    }
    return options;
}

/// The defaults of all variables go behind their variables of the environment.
void addSources(Entry& entry, InVariableBase const& variable)
{
    for (InContextAliasBase const* alias : InDeclarations::getSources(variable)) {
        const std::string key = alias->getKey();
        if (dynamic_cast<Environment const*>(alias) != nullptr && key != entry.key) {
            entry.addSource(key);
            entry.hasVariable = true;
        } else if (dynamic_cast<Default const*>(alias) != nullptr && !key.empty())
            entry.addSource("default " + key);
    }
}

/// Puts what each variable tells into the entries of its options, or else into those of its first variable of the
/// environment.
void addVariables(Options& options, std::vector<Entry>& alone)
{
    for (InVariableBase const* variable : InDeclarations::getVariables()) {
        const std::vector<InContextAliasBase const*> sources = InDeclarations::getSources(*variable);
        bool hasOption = false;
        for (InContextAliasBase const* alias : sources) {
            if (dynamic_cast<Option const*>(alias) == nullptr || alias->getKey()[0] == '\0')
                continue;
            Entry& entry = options[alias->getKey()[0]];
            entry.placeholder = placeholderOf(*variable);
            addSources(entry, *variable);
            hasOption = true;
        }
        const auto first = std::find_if(sources.begin(), sources.end(), [](InContextAliasBase const* alias) {
            return dynamic_cast<Environment const*>(alias) != nullptr;
        });
        if (hasOption || isOwnSetting(variable->getHandle()) || first == sources.end())
            continue;
        Entry entry;
        entry.key = (*first)->getKey();
        entry.description = (*first)->getDescription();
        addSources(entry, *variable);
        alone.push_back(entry);
    }
}

Row rowOf(char letter, Entry const& entry)
{
    const bool takesValue = entry.key.size() > 1 && entry.key[1] == ':';
    Row row = InUsageLayout::describeOption(letter, takesValue ? entry.placeholder : "", entry.description);
    row.right = entry.describe(row.right);
    return row;
}

/// The words of every program, and the program's own.
std::vector<Row> rowsOfWords(std::vector<InUsageState::Word> const& words, bool hasOwnH)
{
    std::vector<Row> rows = {{hasOwnH ? "--help" : "-h, --help", "this text"}};
    for (InUsageState::Word const& word : words)
        rows.push_back({word.synopsis, word.description});
    rows.push_back({"--settings", "each setting with its value, and where that comes from"});
    rows.push_back({"--version", "the program and the libraries in it"});
    return rows;
}

/// "override", "option -d", "environment NAME" or "default".
std::string sourceOf(InContextAliasBase const* alias)
{
    if (dynamic_cast<Option const*>(alias) != nullptr)
        return std::string("option -") + alias->getKey()[0];
    if (dynamic_cast<Environment const*>(alias) != nullptr)
        return std::string("environment ") + alias->getKey();
    return dynamic_cast<Default const*>(alias) != nullptr ? "default" : "override";
}

std::string describe(char const* name, DbgBuildInfo const& info)
{
    const auto orEmpty = [](char const* part) { return ExReasonText::orEmpty(part); };
    std::ostringstream text;
    text << orEmpty(name) << " " << info.getMajorVersion() << "." << info.getMinorVersion() << " "
         << orEmpty(info.getStatus()) << " (" << orEmpty(info.getBuildStamp(false)) << ", "
         << orEmpty(info.getBuildDate(false)) << ")";
    return text.str();
}
/// A library that fails is named all the same: which one it is may be what is looked for.
std::string describe(System::FamilyLibrary const& library)
{
    try {
        const ObjPtr<DbgBuildInfo> info(library.getBuildInfo());
        return info ? describe(info->getLibraryName(false), *info)
                    : library.fileName + " (tells nothing of itself)";
    } catch (std::exception const& failure) {
        return library.fileName + " (" + OsTerminal::shown(failure.what()) + ")";
    } catch (...) {
        return library.fileName + " (tells nothing of itself)";
    }
}
}  // namespace

std::string programNameOf(char const* path)
{
    std::string name = path != nullptr ? path : "";
    // Both separators on both platforms: a name is for people.
    const std::size_t separator = name.find_last_of("/\\");
    if (separator != std::string::npos)
        name.erase(0, separator + 1);
    constexpr std::string_view suffix = ".exe";
    if (name.size() > suffix.size() && name.ends_with(suffix))
        name.resize(name.size() - suffix.size());
    return name.empty() ? "program" : OsTerminal::shown(name);
}

std::ostream& InUsage::print(std::ostream& stream, char const* program, int columns) const
{
    using namespace InUsageLayout;
    // One less: where the last column is written, some terminals begin a line of their own.
    const std::size_t width = static_cast<std::size_t>(std::max(columns, 40)) - 1;
    Options options = getOptions();
    std::vector<Entry> alone;
    addVariables(options, alone);

    std::vector<Row> optionRows, aloneRows;
    for (auto const& [letter, entry] : options)
        optionRows.push_back(rowOf(letter, entry));
    for (Row& row : rowsOfWords(_state->words, options.contains('h')))
        optionRows.push_back(std::move(row));
    for (Entry const& entry : alone)
        aloneRows.push_back({entry.key, entry.describe(entry.description)});

    const std::string operands = _state->operandNames.empty() ? "" : " " + _state->operandNames;
    printText(stream, std::string(program != nullptr ? program : "") + " [OPTION]..." + operands, width);
    printText(stream, _state->summary, width);
    stream << "\nOptions:\n";
    printRows(stream, optionRows, leftWidthOf(optionRows, width), width);
    if (std::any_of(options.begin(), options.end(), [](auto const& one) { return one.second.hasVariable; }))
        printText(stream,
                  "\nAn option counts more than the variable in parentheses, and that more than the default.",
                  width);
    if (!aloneRows.empty()) {
        stream << "\nVariables of the environment:\n";
        printRows(stream, aloneRows, leftWidthOf(aloneRows, width), width);
    }
    for (std::string const& note : _state->notes) {
        stream << "\n";
        printText(stream, note, width);
    }
    return stream;
}

std::vector<InSetting> InUsage::getSettings(int argc, char const* const* argv)
{
    const InCommandLine line(argc, argv, nullptr);
    std::vector<InSetting> settings;
    for (InVariableBase const* variable : InDeclarations::getVariables()) {
        const InCommandLine::Choice choice = line.choose(*variable);
        if (choice.text == nullptr)
            settings.push_back({variable->getHandle(), false, "", "none", ""});
        else
            settings.push_back({variable->getHandle(), true, choice.text, readingOf(*variable, choice.text),
                                sourceOf(choice.alias)});
    }
    return settings;
}

std::ostream& InUsage::printSettings(std::ostream& stream, std::vector<InSetting> const& settings)
{
    using InUsageLayout::lengthOf;
    // Texts of any length, as paths, shouldn't push the sources of all others out of sight.
    constexpr std::size_t longestValue = 30;
    std::size_t handleWidth = 0, valueWidth = 0;
    for (InSetting const& setting : settings) {
        const std::size_t length = lengthOf(setting.reading);
        handleWidth = std::max(handleWidth, lengthOf(setting.handle));
        valueWidth = std::max(valueWidth, length <= longestValue ? length : 0);
    }
    const auto padded = [](std::string const& text, std::size_t width) {
        const std::size_t length = lengthOf(text);
        return text + std::string(width > length ? width - length : 0, ' ');
    };
    for (InSetting const& setting : settings) {
        stream << "  " << padded(setting.handle, handleWidth) << "  ";
        if (setting.hasValue)
            stream << padded(setting.reading, valueWidth) << "  " << setting.source << "\n";
        else
            stream << setting.reading << "\n";
    }
    return stream;
}

/// The application if it has registered, which it may do before the start; else its name alone. The libraries are asked
/// themselves, as what they register in their packages' hooks isn't there before the start.
void printVersions(std::ostream& stream, std::string const& program)
{
    std::vector<std::string> lines;
    for (System::FamilyLibrary const& library : System::getFamilyLibraries())
        lines.push_back(describe(library));
    std::sort(lines.begin(), lines.end());
    try {
        DbgBuildInfo const& application = DbgBuildInfoMgr::getAppInfo();
        stream << describe(application.getApiName(), application) << "\n";
    } catch (DbgBuildInfoEx::ExAppNotRegistered const&) {
        stream << program << "\n";
    }
    for (std::string const& line : lines)
        stream << line << "\n";
}

}  // namespace Vn
