#include "settings.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <iomanip>
#include <ostream>
#include <string>

VN_DEFINE_PACKAGE(inventorySettings, VnInit::base);

namespace Inventory::Settings
{
namespace
{
using Option = Vn::InContextAlias<Vn::InInitArg, 1>;
using Variable = Vn::InContextAlias<Vn::InInitEnv, 1>;
using Default = Vn::InContextAlias<Vn::InInitDef, 0>;
using Override = Vn::InContextAlias<Vn::InInitOvr, 0>;

Vn::InInit<VnInit::inventorySettings> package;

const Option copyOption("c:", "-c TARGET    copy what is found to TARGET, and compare");
const Variable copyVariable("INVENTORY_COPY", "INVENTORY_COPY");
const Default copyDefault("", "none");

const Option depthOption("d:", "-d LEVELS    levels of folders to look into");
const Variable depthVariable("INVENTORY_DEPTH", "INVENTORY_DEPTH");
const Default depthDefault("100", "100");

const Option hiddenOption("a", "-a           count what begins with a dot, too");
const Variable hiddenVariable("INVENTORY_HIDDEN", "INVENTORY_HIDDEN");
const Default hiddenDefault("false", "false");

const Option orderOption("s:", "-s ORDER     sort by bytes, files or suffix");
const Variable orderVariable("INVENTORY_ORDER", "INVENTORY_ORDER");
const Default orderDefault("bytes", "bytes");

const Option progressOption("p", "-p           tell how far a long walk is");
const Variable progressVariable("INVENTORY_PROGRESS", "INVENTORY_PROGRESS");
const Default progressDefault("true", "true");

std::string sourceOf(Vn::InVariableBase const& setting, Option const& option, Variable const& variable)
{
    const std::string source = setting.initSource();
    if (source == Option::initSourceString())
        return std::string("option -") + option.getKey()[0];
    if (source == Variable::initSourceString())
        return std::string("environment ") + variable.getKey();
    return source == Override::initSourceString() ? "override" : "default";
}

void printRow(std::ostream& stream, char const* handle, std::string const& value, std::string const& source)
{
    stream << "  " << std::left << std::setw(20) << handle << std::setw(7) << value << " " << source << "\n"
           << std::right;
}

void printHelpRow(std::ostream& stream, Option const& option, Variable const& variable, Default const& fallback)
{
    stream << "  " << option.getDescription() << " (" << variable.getKey() << ", default "
           << fallback.getDescription() << ")\n";
}
}  // namespace

Vn::InVariable<char const*> copy("inventory.copy", package, copyOption, copyVariable, copyDefault);
Vn::InVariable<int> depth("inventory.depth", package, depthOption, depthVariable, depthDefault);
Vn::InVariable<bool> hidden("inventory.hidden", package, hiddenOption, hiddenVariable, hiddenDefault);
Vn::InVariable<char const*> order("inventory.order", package, orderOption, orderVariable, orderDefault);
Vn::InVariable<bool> progress("inventory.progress", package, progressOption, progressVariable, progressDefault);

bool isDepth(char const* text)
{
    const std::size_t length = std::strlen(text);
    return length > 0 && length < 9 &&
           std::all_of(text, text + length, [](unsigned char character) { return std::isdigit(character) != 0; });
}

bool isOrder(char const* text)
{
    const std::string given = text;
    return given == "bytes" || given == "files" || given == "suffix";
}

void print(std::ostream& stream)
{
    const auto word = [](bool flag) { return flag ? "true" : "false"; };
    const std::string target = copy.getValue();
    printRow(stream, copy.getHandle(), target.empty() ? "none" : target, sourceOf(copy, copyOption, copyVariable));
    printRow(stream, depth.getHandle(), std::to_string(depth.getValue()),
             sourceOf(depth, depthOption, depthVariable));
    printRow(stream, hidden.getHandle(), word(hidden.getValue()), sourceOf(hidden, hiddenOption, hiddenVariable));
    printRow(stream, order.getHandle(), order.getValue(), sourceOf(order, orderOption, orderVariable));
    printRow(stream, progress.getHandle(), word(progress.getValue()),
             sourceOf(progress, progressOption, progressVariable));
}

void printHelp(std::ostream& stream)
{
    printHelpRow(stream, copyOption, copyVariable, copyDefault);
    printHelpRow(stream, depthOption, depthVariable, depthDefault);
    printHelpRow(stream, hiddenOption, hiddenVariable, hiddenDefault);
    printHelpRow(stream, orderOption, orderVariable, orderDefault);
    printHelpRow(stream, progressOption, progressVariable, progressDefault);
}

}  // namespace Inventory::Settings
