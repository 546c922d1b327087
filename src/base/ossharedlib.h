#pragma once

#include <base/objptr.h>
#include <base/osfilepath.h>

namespace Vn
{

/// A shared library that is loaded by its path, and the functions in it.
///
///     Vn::ObjPtr<Vn::OsSharedLib> library = Vn::OsSharedLib::open(path);
///     auto const run = reinterpret_cast<void (*)()>(library->getFunction("run"));
///
/// Loaded from construction on. Nothing unloads it, not even the destructor: the library and the addresses of its
/// functions stay valid to the end of the process. On Linux a library finds others in its own directory if it was
/// linked to look there (`$ORIGIN`). Objects share no state: any thread.
/// Tests: tests/base/ossharedlibtest.cpp.
class VN_BASE_EXPORT OsSharedLib
{
public:
    /// Frees the object; the library stays loaded.
    virtual ~OsSharedLib();

    /// Address of an exported function or object; on Linux also of one in a library that this one depends on.
    ///
    ///     "run"                          ->  its address
    ///     "no such name", "", null       ->  throws OsSharedLibEx::ExFunctionNotFound
    ///
    /// C++ functions are found by their mangled names only, so export with `extern "C"`.
    virtual void* getFunction(char const* name) = 0;

    /// Loads the library, or uses the one that is loaded already. Runs its initialisers in this thread.
    ///
    ///     "/opt/lib/libfilter.so"   ->  that file
    ///     "libfilter.so"            ->  searched where the system searches for libraries; on Linux, at last, in the
    ///                                   directory of this library
    ///     missing, "", no library   ->  throws OsSharedLibEx::ExCantOpenLib with the system's text
    ///
    /// The caller owns the object.
    static ObjPtrRet<OsSharedLib> open(OsFilePath const& path);

    /// End of a library's file name on this platform: ".so", or ".dll" on Windows.
    static char const* getSuffix();

protected:
    /// For the platform's class. Keeps a copy of `path`; loads nothing.
    explicit OsSharedLib(OsFilePath const& path);

    /// @{
    /// Copies the path.
    OsSharedLib(OsSharedLib const&) = default;
    OsSharedLib& operator=(OsSharedLib const&) = default;
    /// @}

    /// The path as open() was given it.
    OsFilePath const& getPath() const { return _path; }

private:
    OsFilePath _path;
};

}  // namespace Vn
