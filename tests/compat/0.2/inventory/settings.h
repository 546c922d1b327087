#pragma once

#include <base/ininit.h>
#include <base/inpackages.h>
#include <base/invariable.h>

#include <iosfwd>

namespace VnInit
{
class inventorySettings
{};
}  // namespace VnInit

/// The program's settings: each has an option, an environment variable and a default.
template <>
class Vn::InInit<VnInit::inventorySettings> : public Vn::InPackageInit
{
    VN_PACKAGE_MEMBERS();
};

namespace Inventory::Settings
{

/// Letters of all options, with those that the program handles before the start.
constexpr char optionLetters[] = "ac:d:hps:";

extern Vn::InVariable<char const*> copy;   ///< folder that gets a copy of what was found, or ""
extern Vn::InVariable<int> depth;          ///< levels of folders to look into
extern Vn::InVariable<bool> hidden;        ///< whether files and folders that begin with a dot count
extern Vn::InVariable<char const*> order;  ///< "bytes", "files" or "suffix"
extern Vn::InVariable<bool> progress;      ///< whether a long walk tells how far it is

/// Whether `text` is a number of levels, and an order.
bool isDepth(char const* text);
bool isOrder(char const* text);

/// Prints each setting with its value and where that came from.
void print(std::ostream& stream);

/// Prints the options and variables.
void printHelp(std::ostream& stream);

}  // namespace Inventory::Settings
