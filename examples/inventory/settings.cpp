#include "settings.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <string>
#include <vector>

VN_DEFINE_PACKAGE(inventorySettings, VnInit::base);

namespace Inventory::Settings
{
namespace
{
using Option = Vn::InContextAlias<Vn::InInitArg, 1>;
using Variable = Vn::InContextAlias<Vn::InInitEnv, 1>;
using Default = Vn::InContextAlias<Vn::InInitDef, 0>;

Vn::InInit<VnInit::inventorySettings> package;

const Option allOption("a", "-a: print all suffixes, and not the first twenty alone");
const Variable allVariable("INVENTORY_ALL", "INVENTORY_ALL");
const Default allDefault("false", "false");

const Option copyOption("c:", "-c TARGET: copy what is found to TARGET, and compare");
const Variable copyVariable("INVENTORY_COPY", "INVENTORY_COPY");
const Default copyDefault("", "none");

const Option depthOption("d:", "-d LEVELS: levels of folders to look into");
const Variable depthVariable("INVENTORY_DEPTH", "INVENTORY_DEPTH");
const Default depthDefault("100", "100");

const Option hiddenOption("H", "-H: count what begins with a dot, too");
const Variable hiddenVariable("INVENTORY_HIDDEN", "INVENTORY_HIDDEN");
const Default hiddenDefault("false", "false");

const Option orderOption("s:", "-s ORDER: sort by bytes, files or suffix");
const Variable orderVariable("INVENTORY_ORDER", "INVENTORY_ORDER");
const Default orderDefault("bytes", "bytes");

const Option progressOption("p", "-p: tell on a terminal how far a long walk is");
const Variable progressVariable("INVENTORY_PROGRESS", "INVENTORY_PROGRESS");
const Default progressDefault("true", "true");
}  // namespace

Vn::InVariable<bool> all("inventory.all", package, allOption, allVariable, allDefault);
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

Vn::InUsage getUsage()
{
    return Vn::InUsage("Files and bytes in a folder, by suffix.")
        .operands("FOLDER", 0, 1)
        .expect(depth, "a number of levels", isDepth)
        .expect(order, "bytes, files or suffix", isOrder)
        .note("Of the log and the trace; docs/logging.md has all variables:\n"
              "  VN_LOG_GROUPS=Inventory=Informational   logs each file that is read\n"
              "  VN_LOG_INFORMATIONAL=%FILE              into FILE, and to the standard output\n"
              "  VN_TRACE_OPTIONS=show=Inventory         draws the calls")
        .note("Exit code: 0 for success, 1 for a failure, 2 for wrong use.");
}

void print(std::ostream& stream)
{
    std::vector<Vn::InSetting> settings = Vn::InUsage::getSettings();
    std::erase_if(settings, [](Vn::InSetting const& setting) { return !setting.handle.starts_with("inventory."); });
    Vn::InUsage::printSettings(stream, settings);
}

}  // namespace Inventory::Settings
