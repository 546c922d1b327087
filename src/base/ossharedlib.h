#pragma once

#include <base/objptr.h>
#include <base/osfilepath.h>

namespace Vn
{

/// A shared library that is opened by its path, and functions in it.
///
///     Vn::ObjPtr<Vn::OsSharedLib> library = Vn::OsSharedLib::open(path);
///     auto const run = reinterpret_cast<void (*)()>(library->getFunction("run"));
///
/// Open from birth. Nothing unloads it: the library, and the addresses of its functions, stay valid to the end of the
/// process. On Linux it finds its siblings in its own folder if it is built to (`$ORIGIN`).
/// No state is shared: any thread, and each its own object.
/// Tests: tests/base/ossharedlibtest.cpp.
class VN_BASE_EXPORT OsSharedLib
{
public:
    virtual ~OsSharedLib();

    /// Address of a function, or of another exported object. Throws OsSharedLibEx::ExFunctionNotFound, also for null.
    virtual void* getFunction(char const* name) = 0;

    /// Loads the library, or takes part in one that is loaded already. A path without a separator is looked up as the
    /// system looks up libraries. Throws OsSharedLibEx::ExCantOpenLib with the system's text.
    static ObjPtrRet<OsSharedLib> open(OsFilePath const& path);

    /// ".so", or ".dll" on Windows.
    static char const* getSuffix();

protected:
    explicit OsSharedLib(OsFilePath const& path);
    OsSharedLib(OsSharedLib const&) = default;
    OsSharedLib& operator=(OsSharedLib const&) = default;

    OsFilePath const& getPath() const { return _path; }

private:
    OsFilePath _path;
};

}  // namespace Vn
