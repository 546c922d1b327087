#include "workgroup.h"

#include <base/osdateutil.h>
#include <base/osdirectory.h>
#include <base/osendian.h>
#include <base/osfilereader.h>
#include <base/osfilewriter.h>
#include <base/osfsutils.h>
#include <base/osutils.h>
#include <base/testdir.h>

#include <csignal>
#include <cstdint>
#include <exception>
#include <iostream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>

namespace
{
using namespace Vn;

/// A folder of the run's own. It goes with the run, however that ends: an exception leaves it behind as little as a
/// signal does, which is only remembered while the folder is there and sent again behind its end.
class RunFolder
{
public:
    RunFolder()
    {
        for (std::size_t i = 0; i < std::size(signals); ++i)
            _before[i] = std::signal(signals[i], remember);
        try {
            const std::string name = "groups-" + std::to_string(OsUtils::getPid());
            _path = TestDir::create(TestDir::getDefaultPath() + name.c_str());
        } catch (...) {
            restoreSignals();
            throw;
        }
    }

    ~RunFolder()
    {
        try {
            remove();
        } catch (std::exception const& failure) {
            std::cerr << _path.getChars() << " is left behind: " << failure.what() << "\n";
        }
        restoreSignals();
    }

    RunFolder(RunFolder const&) = delete;
    RunFolder& operator=(RunFolder const&) = delete;

    OsFilePath const& getPath() const { return _path; }

    /// Throws if a signal has come. To be called between two steps.
    static void checkSignals()
    {
        if (_caught != 0)
            throw std::runtime_error("interrupted");
    }

private:
    static constexpr int signals[] = {SIGINT, SIGTERM};

    static void remember(int signal)
    {
        _caught = signal;
        std::signal(signal, remember);  // some systems take the handler away when they call it
    }

    void restoreSignals() const
    {
        for (std::size_t i = 0; i < std::size(signals); ++i)
            std::signal(signals[i], _before[i]);
        if (_caught != 0)
            std::raise(_caught);
    }

    /// With what there is of the trees in it: a run may have ended anywhere.
    void remove() const
    {
        for (OsFilePath const& folder : {_path + "source", _path + "target"}) {
            if (!OsFsUtils::isDirectory(folder.getChars()))
                continue;
            OsDirectory directory(folder);
            directory.removeChildren(OsLeafFileFilter());
            directory.remove();
        }
        OsDirectory(_path).remove();
    }

    static inline volatile std::sig_atomic_t _caught = 0;

    OsFilePath _path;
    void (*_before[std::size(signals)])(int) = {};
};

class Files : public WorkGroup
{
public:
    Files() : WorkGroup("files", "Writes files, lists, copies and reads them, and removes them again.", 100) {}

private:
    void work(unsigned long count) override
    {
        const RunFolder root;
        const OsFilePath source = TestDir::create(root.getPath() + "source");
        for (unsigned long i = 0; i < count; ++i) {
            RunFolder::checkSignals();
            write(source + std::to_string(i).c_str(), i);
        }
        const OsFilePath target = root.getPath() + "target";
        OsDirectory::copyHierarchy(source, target);
        const ObjPtr<Vector<OsFilePath>> names(
            OsDirectory(target).getChildrenPath(OsFileTypes::LeafPath, OsPassThroughFilter()));
        require(names->size() == count, "the number of copies");
        for (OsFilePath const& name : *names) {
            RunFolder::checkSignals();
            require(std::to_string(read(target + name.getChars())) == name.getChars(), "what a copy holds");
        }
    }

    static void write(OsFilePath const& path, std::uint64_t value)
    {
        OsFileWriter writer(path, OsFileTypes::Permissions(), true);
        require(writer.write(&value, sizeof value) == sizeof value, "the bytes written");
        writer.close();
    }

    static std::uint64_t read(OsFilePath const& path)
    {
        std::uint64_t value = 0;
        OsFileReader reader(path);
        require(reader.read(&value, sizeof value) == sizeof value, "the bytes read");
        return value;
    }
} files;

class Dates : public WorkGroup
{
public:
    Dates() : WorkGroup("dates", "Takes the date apart and puts it together again, day by day.", 10000) {}

private:
    void work(unsigned long count) override
    {
        OsDateTypes::DateRep date(0, 0);
        require(OsDateUtil::makeTime(1970, 1, 1, 12, 30, 15.0, OsDateTypes::UTCTime, date), "a date");
        for (unsigned long i = 0; i < count; ++i) {
            const OsDateTypes::DateStruct fields = OsDateUtil::convertToDateStruct(date, OsDateTypes::UTCTime);
            OsDateTypes::DateRep again(0, 0);
            require(OsDateUtil::makeTime(fields.getYear(), fields.getMonth(), fields.getDay(), fields.getHour(),
                                         fields.getMinute(), fields.getSecond(), OsDateTypes::UTCTime, again) &&
                        OsDateUtil::compare(date, again) == 0,
                    "the date from its parts");
            require(fields.getDayOfWeek() == static_cast<int>((i + 4) % 7), "the day of the week");
            date = OsDateUtil::add(date, 86400.0);
        }
    }
} dates;

class Endian : public WorkGroup
{
public:
    Endian() : WorkGroup("endian", "Turns bytes about.", 100000) {}

private:
    void work(unsigned long count) override
    {
        for (std::uint64_t i = 0; i < count; ++i)
            require(OsEndian::invert(OsEndian::invert(i * 0x9E3779B97F4A7C15)) == i * 0x9E3779B97F4A7C15,
                    "bytes turned about twice");
    }
} endian;
}  // namespace
