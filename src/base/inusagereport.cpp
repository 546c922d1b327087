// What InUsage prints: the usage text, the settings, and the versions.
//
// The usage text has the rows of inusageentries.cpp, and the program's notes. It begins with the program's name and not with a
// word for "usage", and goes to standard output when it was asked for: it is then a result, which one may search and page.
//
// Settings are listed with the value as the variable reads it, since that is what counts ("true" for "yes"); the text itself
// stands there if its type can't make sense of all of it.
//
// Versions are those of the libraries in the process, asked through the entry that each library of the family exports
// (inusagelinux.cpp, inusagewindows.cpp). What libraries register with the build information is there after the start only.
#include <base/inusage.h>

#include <base/dbgbuildinfo.h>
#include <base/dbgbuildinfoex.h>
#include <base/dbgbuildinfomgr.h>
#include <base/exreasontext_p.h>
#include <base/incommandline_p.h>
#include <base/incontextalias.h>
#include <base/indeclarations_p.h>
#include <base/inusageentries_p.h>
#include <base/inusagelayout_p.h>
#include <base/invalueform.h>
#include <base/objptr.h>
#include <base/osterminal.h>

#include <algorithm>
#include <exception>
#include <ostream>
#include <sstream>

namespace Vn
{
namespace
{
using InUsageLayout::Row;
using Option = InContextAlias<InInitArg, 1>;
using Environment = InContextAlias<InInitEnv, 1>;
using Default = InContextAlias<InInitDef, 0>;

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

/// "override", "option -d", "environment NAME" or "default".
std::string sourceOf(InContextAliasBase const* alias)
{
    if (dynamic_cast<Option const*>(alias) != nullptr)
        return std::string("option -") + alias->getKey()[0];
    if (dynamic_cast<Environment const*>(alias) != nullptr)
        return std::string("environment ") + alias->getKey();
    return dynamic_cast<Default const*>(alias) != nullptr ? "default" : "override";
}

/// Name, version and status, then stamp and date in parentheses. Another library's answers may be null.
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

/// As people call the program: without its folder, and on any platform without the suffix of Windows.
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
    const InUsageEntries entries;
    const std::vector<Row> optionRows = entries.getOptionRows(_state->words);
    const std::vector<Row> aloneRows = entries.getVariableRows();

    const std::string operands = _state->operandNames.empty() ? "" : " " + _state->operandNames;
    printText(stream, std::string(program != nullptr ? program : "") + " [OPTION]..." + operands, width);
    printText(stream, _state->summary, width);
    stream << "\nOptions:\n";
    printRows(stream, optionRows, leftWidthOf(optionRows, width), width);
    if (entries.hasRanks())
        printText(stream, std::string("\n") + InUsageEntries::ranks, width);
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
