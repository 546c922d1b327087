#pragma once

#include "crew.h"
#include "pass.h"

#include <base/ininit.h>
#include <base/inpackages.h>
#include <base/insingleton.h>
#include <base/osfile.h>
#include <base/osfilefilter.h>

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

/// Lets pass what the user wants to see: with or without what begins with a dot.
class VisibleFilter : public Vn::OsFileFilter
{
public:
    explicit VisibleFilter(bool showsHidden) : _showsHidden(showsHidden) {}

    bool filter(Vn::OsFilePath const& path) const override;

private:
    bool _showsHidden;
};

/// What a walk has found: everything by its name below the folder, in the order of the walk.
struct Findings
{
    struct File
    {
        std::string name;
        std::uint64_t bytes = 0;
        std::uint64_t checksum = 0;
    };

    struct Unread
    {
        std::string name;
        std::string reason;
    };

    std::vector<std::string> folders;
    std::vector<File> files;     ///< those that were read
    std::vector<File> links;     ///< symbolic links that lead somewhere; never followed
    std::vector<Unread> unread;  ///< and why
};

/// Walks a folder, then reads every file in it from its first to its last byte, several at a time, and counts by suffix.
class Scanner
{
public:
    static Scanner& getInstance();

    Scanner(int depth, bool countsHidden, bool showsProgress);

    /// Throws std::runtime_error if `folder` itself can't be listed; what can't be read below it is remembered, and the
    /// walk goes on.
    void scan(std::string const& folder);

    /// Prints a row for each suffix, in `order`, and their sum.
    void print(std::ostream& stream, std::string const& order) const;

    /// Prints the `count` largest files with their owner, size and time of modification.
    void printLargest(std::ostream& stream, std::size_t count) const;

    /// Prints how long walking and reading took, with a row for each clock.
    void printPasses(std::ostream& stream) const;

    Findings const& getFindings() const { return _findings; }

private:
    struct Tally
    {
        std::uint64_t files = 0;
        std::uint64_t bytes = 0;
    };

    struct Waiting
    {
        std::string name;  ///< of a folder, below the root; "" for the root itself
        int level;
    };

    void walk();
    void listFolder(Waiting const& folder);
    void takeChild(Vn::OsFile const& child, Waiting const& folder);
    void readFiles();
    void tellProgress();

    const int _depth;
    const bool _showsProgress;
    const VisibleFilter _filter;
    std::string _root;
    std::vector<Waiting> _waiting;
    std::vector<Crew::Task> _toRead;
    Findings _findings;
    Pass _walking{"walking"};  ///< a round for each folder
    Pass _reading{"reading"};  ///< one round
    std::uint64_t _filesRead = 0;
    std::uint64_t _bytesTold = 0;
    std::uint64_t _bytesRead = 0;
    bool _hasTold = false;
};

/// The path of what is called `name` below `folder`.
std::string pathBelow(std::string const& folder, std::string const& name);

}  // namespace Inventory
