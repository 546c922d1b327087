// ossharedlibwindows.cpp (POSIX form: ossharedlibposix.cpp)
//
// LoadLibraryA() and GetProcAddress(); the module is never freed, so addresses stay valid to the end of the process.
// The system's message ends with a full stop and a line end, which stay in the exception's text.
#include <base/ossharedlib.h>

#include <base/exreasontext_p.h>
#include <base/ossharedlibex.h>

#include <windows.h>

#include <cstring>

namespace Vn
{
namespace
{
constexpr char const* sourceName = "src/base/ossharedlibwindows";

class OsSharedLibWindows : public OsSharedLib
{
public:
    /// Loads nothing yet: see load().
    explicit OsSharedLibWindows(OsFilePath const& path) : OsSharedLib(path), _module(nullptr) {}

    void load()
    {
        // As it was given; the system's search asks for "\" and not "/" as the separator.
        _module = ::LoadLibraryA(getPath().getChars());
        if (_module == nullptr)
            throwCantOpen(::GetLastError());
    }

    void* getFunction(char const* name) override
    {
        char const* const known = ExReasonText::orEmpty(name);
        const ::FARPROC function = ::GetProcAddress(_module, known);
        if (function == nullptr)
            throw OsSharedLibEx::ExFunctionNotFound(sourceName, __LINE__, getPath().getChars(), known);
        // A cast from a function pointer to void* is only conditionally supported; copying the bits is not.
        void* address;
        static_assert(sizeof address == sizeof function);
        std::memcpy(&address, &function, sizeof address);
        return address;
    }

private:
    /// With the system's text for `error` in the user's language.
    [[noreturn]] void throwCantOpen(::DWORD error) const
    {
        char text[256] = "";  // stays empty if the system has no text for the error, or a longer one
        // The error was taken before: the allocations of an exception may change it. Language 0 is the user's.
        ::FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, error, 0, text, sizeof text, nullptr);
        throw OsSharedLibEx::ExCantOpenLib(sourceName, __LINE__, getPath().getChars(), text);
    }

    ::HMODULE _module;
};
}  // namespace

ObjPtrRet<OsSharedLib> OsSharedLib::open(OsFilePath const& path)
{
    ObjPtr<OsSharedLibWindows> library(new OsSharedLibWindows(path));
    library->load();
    return ObjPtrRet<OsSharedLib>(library.release());
}

char const* OsSharedLib::getSuffix()
{
    return ".dll";
}

}  // namespace Vn
