#pragma once

/// The mark of everything that `libVNbase` shows to others; all else stays hidden inside the library.
///
/// A further library of the family makes a macro of its own in the same way and never borrows this one: on Windows
/// the same class is exported by the library that holds it and imported by all others.
#if defined(_WIN32)
#    if defined(VN_BASE_BUILDING)
#        define VN_BASE_EXPORT __declspec(dllexport)
#    else
#        define VN_BASE_EXPORT __declspec(dllimport)
#    endif
#else
#    define VN_BASE_EXPORT __attribute__((visibility("default")))
#endif
