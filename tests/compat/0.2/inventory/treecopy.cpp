#include "treecopy.h"

#include "reading.h"

#include <base/exbase.h>
#include <base/osfile.h>
#include <base/osfsutils.h>

namespace Inventory
{

CopyResult copyTree(Findings const& findings, std::string const& folder, std::string const& target)
{
    CopyResult result;
    Vn::OsFsUtils::createDir(target.c_str(), true);
    const auto attempt = [&result](std::string const& name, std::size_t& count, auto const& act) {
        try {
            if (act())
                ++count;
            else
                result.failures.push_back(name + ": the copy differs");
        } catch (Vn::ExBase const& failure) {
            result.failures.push_back(name + ": " + failure.getReason());
        }
    };
    for (std::string const& name : findings.folders)  // each behind the folder that it lies in
        attempt(name, result.folders, [&] {
            Vn::OsFsUtils::createDir(pathBelow(target, name).c_str(), true);
            return true;
        });
    for (Findings::File const& found : findings.files)
        attempt(found.name, result.files, [&] {
            const std::string source = pathBelow(folder, found.name);
            const std::string copy = pathBelow(target, found.name);
            Vn::OsFile(Vn::OsFilePath(source.c_str())).copyTo(Vn::OsFilePath(copy.c_str()));
            return haveSameBytes(source, copy);
        });
    return result;
}

}  // namespace Inventory
