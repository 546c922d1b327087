#pragma once

/// Marks what this library exports: on Windows imported by programs, exported by the library itself.
#if defined(_WIN32)
#    if defined(VN_THREADLOG_BUILDING)
#        define VN_THREADLOG_EXPORT __declspec(dllexport)
#    else
#        define VN_THREADLOG_EXPORT __declspec(dllimport)
#    endif
#else
#    define VN_THREADLOG_EXPORT __attribute__((visibility("default")))
#endif
