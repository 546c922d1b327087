#include "workgroup.h"

#include <base/osdateutil.h>
#include <base/osdirectory.h>
#include <base/osendian.h>
#include <base/osfilereader.h>
#include <base/osfilewriter.h>
#include <base/osutils.h>
#include <base/testdir.h>

#include <cstdint>
#include <filesystem>
#include <memory>

namespace
{
using namespace Vn;

class Files : public WorkGroup
{
public:
    Files() : WorkGroup("files", "Writes files, lists, copies and reads them, and removes them again.", 100) {}

private:
    /// A folder that is removed with what it holds; the group is over if it throws, and nothing else would do it.
    class Folder
    {
    public:
        explicit Folder(OsFilePath const& path) : _path(TestDir::create(path)) {}
        ~Folder() { std::filesystem::remove_all(_path.getChars()); }
        Folder(Folder const&) = delete;
        Folder& operator=(Folder const&) = delete;

        OsFilePath const& getPath() const { return _path; }

    private:
        OsFilePath _path;
    };

    void work(unsigned long count) override
    {
        const std::string own = "groups-" + std::to_string(OsUtils::getPid());
        const Folder root(TestDir::getDefaultPath() + own.c_str());
        const OsFilePath source = TestDir::create(root.getPath() + "source");
        for (unsigned long i = 0; i < count; ++i)
            write(source + std::to_string(i).c_str(), i);
        const OsFilePath target = root.getPath() + "target";
        OsDirectory::copyHierarchy(source, target);
        const ObjPtr<Vector<OsFilePath>> names(
            OsDirectory(target).getChildrenPath(OsFileTypes::LeafPath, OsPassThroughFilter()));
        require(names->size() == count, "the number of copies");
        for (OsFilePath const& name : *names)
            require(std::to_string(read(target + name.getChars())) == name.getChars(), "what a copy holds");
        for (OsFilePath const& folder : {source, target}) {
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
