#include "sibling.h"

#if defined(_WIN32)
#    define VN_MODULE_EXPORT extern "C" __declspec(dllexport)
#else
#    define VN_MODULE_EXPORT extern "C" __attribute__((visibility("default")))
#endif

VN_MODULE_EXPORT int vnTestModuleNumber;
int vnTestModuleNumber = 41;

VN_MODULE_EXPORT int vnTestModuleAnswer()
{
    return vnTestSiblingAnswer(vnTestModuleNumber);
}
