#include "scanner.h"

#include "date.h"
#include "settings.h"

#include <base/exbase.h>
#include <base/osdirectory.h>
#include <base/osfsutils.h>
#include <base/trace.h>

#include <algorithm>
#include <iomanip>
#include <iostream>
#include <memory>
#include <stdexcept>
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
constexpr std::size_t filesPerReport = 1000;
constexpr std::uint64_t bytesPerReport = 64 << 20;

/// VN_TRACE_OPTIONS=show=Inventory draws the calls.
Vn::TraceLevel& traceLevel = *Vn::Trace::registerLevel("Inventory", __FILE__);

std::string suffixOf(std::string const& name)
{
    const Vn::ArrayPtr<char> extension = Vn::OsFilePath(name.c_str()).getExtension();
    return *extension.get() == '\0' ? "(none)" : std::string(".") + extension.get();
}
}  // namespace

bool VisibleFilter::filter(Vn::OsFilePath const& path) const
{
    return _showsHidden || path.getBaseName().getChars()[0] != '.';
}

std::string pathBelow(std::string const& folder, std::string const& name)
{
    Vn::OsFilePath path(folder.c_str());
    if (!name.empty())
        path += Vn::OsFilePath(name.c_str());
    return path.getChars();
}

Scanner& Scanner::getInstance()
{
    return Vn::InSingleton<Scanner>::getInstance();
}

Scanner::Scanner(int depth, bool countsHidden, bool showsProgress)
    : _depth(depth), _showsProgress(showsProgress), _filter(countsHidden)
{}

void Scanner::scan(std::string const& folder)
{
    VN_TRACE_ENTRY(traceLevel, "scan");
    _root = folder;
    _waiting.push_back({"", 0});
    walk();
    readFiles();
    if (_hasTold)
        std::cerr << "\r" << std::setw(40) << ""
                  << "\r" << std::flush;
}

void Scanner::walk()
{
    VN_TRACE_ENTRY(traceLevel, "walk");
    while (!_waiting.empty()) {
        const Waiting next = std::move(_waiting.back());
        _waiting.pop_back();
        _walking.start();
        try {
            listFolder(next);
        } catch (Vn::ExBase const& failure) {
            if (next.name.empty())
                throw std::runtime_error("can't read the folder " + _root + ": " + failure.getReason());
            _findings.unread.push_back({next.name, failure.getReason()});
        }
        _walking.stop();
    }
}

void Scanner::listFolder(Waiting const& folder)
{
    VN_TRACE_ENTRY(traceLevel, "listFolder");
    const Vn::OsDirectory directory(Vn::OsFilePath(pathBelow(_root, folder.name).c_str()));
    const Vn::ObjPtr<Vn::Vector<Vn::OsFile*>> children(directory.getChildren(_filter));
    std::vector<std::unique_ptr<Vn::OsFile>> owned(children->begin(), children->end());
    if (!folder.name.empty())
        _findings.folders.push_back(folder.name);
    for (std::unique_ptr<Vn::OsFile> const& child : owned)
        takeChild(*child, folder);
    VN_TRACE(traceLevel, (folder.name.empty() ? "." : folder.name) << ": " << owned.size());
}

void Scanner::takeChild(Vn::OsFile const& child, Waiting const& folder)
{
    const std::string name = pathBelow(folder.name, child.getPath().getBaseName().getChars());
    char const* const path = child.getPath().getChars();
    const bool isLink = Vn::OsFsUtils::isSymLink(path);
    try {
        if (isLink && !child.exists())
            _findings.unread.push_back({name, "a link to nothing"});
        else if (isLink)
            _findings.links.push_back({name});
        else if (child.isDirectory() && folder.level < _depth)
            _waiting.push_back({name, folder.level + 1});
        else if (child.getType() == Vn::OsFileTypes::SpecialFile)
            _findings.unread.push_back({name, "neither file nor folder"});
        else if (child.isFile())
            _toRead.push_back({name, path});
    } catch (Vn::ExBase const& failure) {
        _findings.unread.push_back({name, failure.getReason()});
    }
}

void Scanner::readFiles()
{
    VN_TRACE_ENTRY(traceLevel, "readFiles");
    const auto onResult = [this](Crew::Result const& result) {
        ++_filesRead;
        _bytesRead += result.reading.bytes;
        tellProgress();
    };
    _reading.start();
    const std::vector<Crew::Result> results = Crew(Crew::getUsualSize()).read(_toRead, onResult);
    _reading.stop();
    for (std::size_t i = 0; i < results.size(); ++i) {
        Crew::Result const& result = results[i];
        if (result.failure.empty())
            _findings.files.push_back({_toRead[i].name, result.reading.bytes, result.reading.checksum});
        else
            _findings.unread.push_back({_toRead[i].name, result.failure});
    }
    _toRead.clear();
    VN_TRACE(traceLevel, results.size() << " files");
}

void Scanner::tellProgress()
{
    const bool isTime = _filesRead % filesPerReport == 0 || _bytesRead - _bytesTold >= bytesPerReport;
    if (!_showsProgress || !isTime)
        return;
    _bytesTold = _bytesRead;
    _hasTold = true;
    std::cerr << "\r" << _filesRead << " files, " << (_bytesRead >> 20) << " MiB ..." << std::flush;
}

void Scanner::printPasses(std::ostream& stream) const
{
    stream << "  " << std::left << std::setw(10) << "pass" << std::setw(14) << "clock" << std::right << std::setw(8)
           << "rounds" << std::setw(12) << "total s" << std::setw(12) << "average s" << std::setw(12) << "longest s"
           << "\n";
    _walking.print(stream);
    _reading.print(stream);
}

void Scanner::print(std::ostream& stream, std::string const& order) const
{
    std::map<std::string, Tally> bySuffix;
    Tally total;
    for (std::vector<Findings::File> const* files : {&_findings.files, &_findings.links}) {
        for (Findings::File const& file : *files) {
            for (Tally* sum : {&bySuffix[suffixOf(file.name)], &total}) {
                ++sum->files;
                sum->bytes += file.bytes;
            }
        }
    }
    std::vector<std::pair<std::string, Tally>> rows(bySuffix.begin(), bySuffix.end());
    if (order != "suffix")
        std::stable_sort(rows.begin(), rows.end(), [&order](auto const& left, auto const& right) {
            return order == "files" ? left.second.files > right.second.files
                                    : left.second.bytes > right.second.bytes;
        });
    const auto printRow = [&stream](std::string const& suffix, auto const& files, auto const& bytes) {
        stream << "  " << std::left << std::setw(20) << suffix << std::right << std::setw(12) << files
               << std::setw(16) << bytes << "\n";
    };
    printRow("suffix", "files", "bytes");
    for (auto const& [suffix, tally] : rows)
        printRow(suffix, tally.files, tally.bytes);
    printRow("total", total.files, total.bytes);
}

void Scanner::printLargest(std::ostream& stream, std::size_t count) const
{
    std::vector<Findings::File> files = _findings.files;
    count = std::min(count, files.size());
    std::partial_sort(files.begin(), files.begin() + static_cast<std::ptrdiff_t>(count), files.end(),
                      [](Findings::File const& left, Findings::File const& right) {
                          return left.bytes != right.bytes ? left.bytes > right.bytes : left.name < right.name;
                      });
    files.resize(count);
    for (Findings::File const& found : files) {
        const Vn::OsFile file(Vn::OsFilePath(pathBelow(_root, found.name).c_str()));
        const std::string owner = file.getOwner().get();
        const Vn::ObjPtr<Vn::OsDateTypes::DateRep> modified(file.getLastModificationTime());
        stream << std::setw(14) << found.bytes << "  " << textOf(*modified) << "  " << std::left << std::setw(12)
               << (owner.empty() ? "(not told)" : owner) << std::right << "  " << std::hex << std::setfill('0')
               << std::setw(16) << found.checksum << std::dec << std::setfill(' ') << "  " << found.name << "\n";
    }
}

}  // namespace Inventory
