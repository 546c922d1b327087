// ossharedlibposix.cpp (Windows form: ossharedlibwindows.cpp)
//
// dlopen() with RTLD_NOW, so that a missing symbol fails here, with a message, and not at the first call of a
// function; and RTLD_LOCAL, so that two libraries may define the same names. The handle is never closed: addresses
// that getFunction() has returned stay valid to the end of the process. A second open() of a library gives the same
// handle again.
#include <base/ossharedlib.h>

#include <base/exreasontext_p.h>
#include <base/osposix_p.h>
#include <base/ossharedlibex.h>

#include <dlfcn.h>

#include <cerrno>
#include <cstring>
#include <string>

namespace Vn
{
namespace
{
constexpr char const* sourceName = "src/base/ossharedlibwindows";

class OsSharedLibPosix : public OsSharedLib
{
public:
    explicit OsSharedLibPosix(OsFilePath const& path) : OsSharedLib(path), _module(nullptr) {}

    /// Apart from the constructor, so that a failure destroys a complete object.
    void load()
    {
        // dlopen() takes an empty path for the program itself.
        if (getPath().isEmpty())
            throw OsSharedLibEx::ExCantOpenLib(sourceName, __LINE__, "", std::strerror(ENOENT));
        std::string reason;
        _module = Posix::openModule(getPath().getChars(), RTLD_NOW | RTLD_LOCAL, &reason);
        if (_module == nullptr)
            throw OsSharedLibEx::ExCantOpenLib(sourceName, __LINE__, getPath().getChars(), reason.c_str());
    }

    void* getFunction(char const* name) override
    {
        char const* const known = ExReasonText::orEmpty(name);
        // A symbol whose address is null counts as missing: it could not be called.
        void* const function = ::dlsym(_module, known);
        if (function == nullptr)
            throw OsSharedLibEx::ExFunctionNotFound(sourceName, __LINE__, getPath().getChars(), known);
        return function;
    }

private:
    void* _module;
};
}  // namespace

ObjPtrRet<OsSharedLib> OsSharedLib::open(OsFilePath const& path)
{
    ObjPtr<OsSharedLibPosix> library(new OsSharedLibPosix(path));
    library->load();
    return ObjPtrRet<OsSharedLib>(library.release());
}

// Of a name that a program composes itself; open() appends nothing.
char const* OsSharedLib::getSuffix()
{
    return ".so";
}

}  // namespace Vn
