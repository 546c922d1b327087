// A library of the family with a bad entry, or with none: VN_TEST_ENTRY is what it returns.
#include <base/dbgbuildinfo.h>
#include <base/exinternalerror.h>

#if defined(_WIN32)
#    define VN_MODULE_EXPORT __declspec(dllexport)
#else
#    define VN_MODULE_EXPORT __attribute__((visibility("default")))
#endif

// Makes the library need the one below it, whose entry must not be taken for its own.
extern "C" VN_MODULE_EXPORT void vnTestThrow()
{
    throw Vn::ExInternalError("src/base/test", __LINE__, "thrown by the library");
}

#if defined(VN_TEST_ENTRY)
VN_BUILD_INFO_ENTRY(VN_MODULE_EXPORT)
{
    return VN_TEST_ENTRY;
}
#endif
