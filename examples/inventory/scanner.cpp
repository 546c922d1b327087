#include "scanner.h"

#include "settings.h"

#include <algorithm>
#include <filesystem>
#include <iomanip>
#include <iostream>
#include <utility>

VN_DEFINE_PACKAGE(inventoryScanner, VnInit::base, VnInit::inventorySettings);

static Vn::InInit<VnInit::inventoryScanner> package;

void Vn::InInit<VnInit::inventoryScanner>::performInitialize()
{
    using namespace Inventory;
    InSingleton<Scanner>::initialize(
        new Scanner(Settings::depth.getValue(), Settings::hidden.getValue(), Settings::progress.getValue()));
}

void Vn::InInit<VnInit::inventoryScanner>::performFinalize()
{
    InSingleton<Inventory::Scanner>::finalize();
}

namespace Inventory
{
namespace
{
namespace fs = std::filesystem;

constexpr std::uintmax_t filesPerReport = 5000;

/// The path as UTF-8: on Windows a name may hold what the program's own character set doesn't.
std::string textOf(fs::path const& path)
{
    const std::u8string text = path.u8string();
    return std::string(text.begin(), text.end());
}

bool isHidden(fs::path const& path)
{
    return textOf(path.filename())[0] == '.';
}

std::string suffixOf(fs::path const& path)
{
    const std::string suffix = textOf(path.extension());
    return suffix.empty() ? "(none)" : suffix;
}

/// 0 for a file that went away meanwhile.
std::uintmax_t sizeOf(fs::path const& path)
{
    std::error_code failure;
    const std::uintmax_t size = fs::file_size(path, failure);
    return failure ? 0 : size;
}
}  // namespace

Scanner& Scanner::getInstance()
{
    return Vn::InSingleton<Scanner>::getInstance();
}

Scanner::Scanner(int depth, bool countsHidden, bool showsProgress)
    : _depth(depth), _countsHidden(countsHidden), _showsProgress(showsProgress)
{}

void Scanner::scan(std::string const& folder)
{
    std::vector<std::pair<fs::path, int>> waiting{{fs::path(folder), 0}};
    while (!waiting.empty()) {
        auto const [path, level] = waiting.back();
        waiting.pop_back();
        std::error_code failure;
        fs::directory_iterator entries(path, failure);
        if (failure && level == 0)
            throw fs::filesystem_error("can't read the folder", path, failure);
        if (failure) {
            _unreadable.push_back(textOf(path) + ": " + failure.message());
            continue;
        }
        for (; entries != fs::directory_iterator(); entries.increment(failure)) {
            fs::path const& entry = entries->path();
            if (!_countsHidden && isHidden(entry))
                continue;
            std::error_code ignored;
            const fs::file_status status = fs::symlink_status(entry, ignored);
            if (fs::is_directory(status)) {
                if (level < _depth)
                    waiting.emplace_back(entry, level + 1);
                continue;
            }
            Tally& tally = _bySuffix[suffixOf(entry)];
            for (Tally* sum : {&tally, &_total}) {
                ++sum->files;
                sum->bytes += fs::is_regular_file(status) ? sizeOf(entry) : 0;
            }
            tellProgress();
        }
        if (failure)
            _unreadable.push_back(textOf(path) + ": " + failure.message());
    }
    if (_showsProgress && _total.files >= filesPerReport)
        std::cerr << "\r                        \r" << std::flush;
}

void Scanner::tellProgress()
{
    if (_showsProgress && _total.files % filesPerReport == 0)
        std::cerr << "\r" << _total.files << " files ..." << std::flush;
}

void Scanner::print(std::ostream& stream, std::string const& order) const
{
    std::vector<std::pair<std::string, Tally>> rows(_bySuffix.begin(), _bySuffix.end());
    if (order != "suffix")
        std::stable_sort(rows.begin(), rows.end(), [&order](auto const& left, auto const& right) {
            return order == "files" ? left.second.files > right.second.files
                                    : left.second.bytes > right.second.bytes;
        });
    const auto printRow = [&stream](std::string const& suffix, Tally const& tally) {
        stream << "  " << std::left << std::setw(20) << suffix << std::right << std::setw(12) << tally.files
               << std::setw(16) << tally.bytes << "\n";
    };
    stream << "  " << std::left << std::setw(20) << "suffix" << std::right << std::setw(12) << "files"
           << std::setw(16) << "bytes"
           << "\n";
    for (auto const& [suffix, tally] : rows)
        printRow(suffix, tally);
    printRow("total", _total);
}

std::vector<std::string> const& Scanner::getUnreadable() const
{
    return _unreadable;
}

}  // namespace Inventory
