// Registration with the settings of the process, by object or by the name of a library.
#include <base/dbgbuildinfoutil.h>

#include <base/dbgbuildinfomgr.h>
#include <base/dbgbuildinfoutil_p.h>
#include <base/exreasontext_p.h>
#include <base/ossharedlib.h>
#include <base/ossharedlibex.h>

#include <cstring>
#include <string>

namespace Vn
{
namespace
{
constexpr char sourceName[] = "src/base/dbgbuildinfoutil";
constexpr char entryName[] = "getBuildInfo";
}  // namespace

// A wrong version breaks a process, another build as a rule doesn't: hence the defaults. The package `debugging`
// changes them when its variables say so.
bool DbgBuildInfoUtil::_validateVersions = true;
bool DbgBuildInfoUtil::_checkStamps = false;

void DbgBuildInfoUtil::registerInfo(ObjPtr<DbgBuildInfo> info)
{
    DbgBuildInfoMgr::registerInfo(info, _validateVersions, _checkStamps);
}

/// `library` is destroyed at the end, which doesn't unload it: the object's code must stay.
void DbgBuildInfoUtil::registerModule(char const* name)
{
    const std::string file = std::string("libVN") + ExReasonText::orEmpty(name) + OsSharedLib::getSuffix();
    ObjPtr<OsSharedLib> const library = OsSharedLib::open(file.c_str());
    void* const address = library->getFunction(entryName);
    // The system also finds a function of that name in the libraries that this one links; that one would describe
    // them.
    if (!System::isInModule(address, file.c_str()))
        throw OsSharedLibEx::ExFunctionNotFound(sourceName, __LINE__, file.c_str(), entryName);
    // A cast from a data pointer to a function pointer is not in the language; the bytes are the same.
    DbgBuildInfo* (*entry)();
    static_assert(sizeof entry == sizeof address);
    std::memcpy(&entry, &address, sizeof entry);
    registerInfo(ObjPtr<DbgBuildInfo>(entry()));
}

void DbgBuildInfoUtil::setValidateVersions(bool validate)
{
    _validateVersions = validate;
}

void DbgBuildInfoUtil::setCheckStamps(bool check)
{
    _checkStamps = check;
}

}  // namespace Vn
