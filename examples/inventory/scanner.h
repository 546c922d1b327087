#pragma once

#include <base/ininit.h>
#include <base/inpackages.h>
#include <base/insingleton.h>

#include <cstdint>
#include <iosfwd>
#include <map>
#include <string>
#include <vector>

namespace VnInit
{
class inventoryScanner
{};
}  // namespace VnInit

/// Makes the scanner, from the settings, and destroys it.
template <>
class Vn::InInit<VnInit::inventoryScanner> : public Vn::InPackageInit
{
    VN_PACKAGE_MEMBERS();

public:
    void performInitialize() override;
    void performFinalize() override;
};

namespace Inventory
{

/// Counts files and bytes below a folder, by suffix. Links are counted as they are and never followed.
class Scanner
{
public:
    static Scanner& getInstance();

    Scanner(int depth, bool countsHidden, bool showsProgress);

    /// Throws std::filesystem::filesystem_error if `folder` itself can't be read; what can't be read below it is
    /// remembered.
    void scan(std::string const& folder);

    /// Prints a row for each suffix, in `order`, and their sum.
    void print(std::ostream& stream, std::string const& order) const;

    std::vector<std::string> const& getUnreadable() const;

private:
    struct Tally
    {
        std::uintmax_t files = 0;
        std::uintmax_t bytes = 0;
    };

    void tellProgress();

    int _depth;
    bool _countsHidden;
    bool _showsProgress;
    std::map<std::string, Tally> _bySuffix;
    Tally _total;
    std::vector<std::string> _unreadable;
};

}  // namespace Inventory
