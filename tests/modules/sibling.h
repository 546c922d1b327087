#pragma once

#if defined(_WIN32)
#    if defined(VN_SIBLING_BUILDING)
#        define VN_SIBLING_EXPORT __declspec(dllexport)
#    else
#        define VN_SIBLING_EXPORT __declspec(dllimport)
#    endif
#else
#    define VN_SIBLING_EXPORT __attribute__((visibility("default")))
#endif

extern "C" VN_SIBLING_EXPORT int vnTestSiblingAnswer(int question);
