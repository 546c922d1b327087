// ossharedlibposix.cpp (Windows form: ossharedlibwindows.cpp)
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

    void load()
    {
        // An empty path would open the program itself.
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

char const* OsSharedLib::getSuffix()
{
    return ".so";
}

}  // namespace Vn
