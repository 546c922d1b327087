#include "workgroup.h"

#include <base/osdateutil.h>
#include <base/osdirectory.h>
#include <base/osendian.h>
#include <base/osfilereader.h>
#include <base/osfilewriter.h>
#include <base/osfsutils.h>
#include <base/osutils.h>
#include <base/testdir.h>

#include <cstdint>
#include <memory>

namespace
{
using namespace Vn;

class Files : public WorkGroup
{
public:
    Files() : WorkGroup("files", "Writes files, lists, copies and reads them, and removes them again.", 100) {}

    void prepare(int, char** const) override
    {
        const std::string name = "groups-" + std::to_string(OsUtils::getPid());
        _root = TestDir::create(TestDir::getDefaultPath() + name.c_str());
    }

    /// After an exception the driver doesn't call terminate(), so the folder goes here.
    void execute(int argc, char** const argv) override
    {
        try {
            WorkGroup::execute(argc, argv);
        } catch (...) {
            removeTrees();
            terminate();
            throw;
        }
    }

    void terminate() override { OsDirectory(_root).remove(); }

private:
    void work(unsigned long count) override
    {
        const OsFilePath source = TestDir::create(_root + "source");
        for (unsigned long i = 0; i < count; ++i)
            write(source + std::to_string(i).c_str(), i);
        const OsFilePath target = _root + "target";
        OsDirectory::copyHierarchy(source, target);
        const ObjPtr<Vector<OsFilePath>> names(
            OsDirectory(target).getChildrenPath(OsFileTypes::LeafPath, OsPassThroughFilter()));
        require(names->size() == count, "the number of copies");
        for (OsFilePath const& name : *names)
            require(std::to_string(read(target + name.getChars())) == name.getChars(), "what a copy holds");
        removeTrees();
    }

    /// What there is of them: a run may have failed anywhere.
    void removeTrees() const
    {
        for (OsFilePath const& folder : {_root + "source", _root + "target"}) {
            if (!OsFsUtils::isDirectory(folder.getChars()))
                continue;
            OsDirectory directory(folder);
            directory.removeChildren(OsLeafFileFilter());
            directory.remove();
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

    OsFilePath _root;
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
