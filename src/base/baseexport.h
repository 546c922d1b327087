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

/// The mark of a class template whose instances the library asks for by `dynamic_cast`, and which each module makes for itself:
/// a user's program that hides its names by default still has one type with the library. Some standard libraries compare types
/// by their place in memory alone. Windows has no such mark, and its runtime compares names.
#if defined(_WIN32)
#    define VN_BASE_SHARED_TYPE
#else
#    define VN_BASE_SHARED_TYPE __attribute__((visibility("default")))
#endif

/// Marks a function whose parameter number FORMAT is a format as std::printf takes it, so that the compiler compares it with the
/// arguments from number FIRST on. Members count the object as number 1. On Windows the format is still that of the C
/// standard, which MinGW implements itself, and not the one of the system's own library.
#if defined(__MINGW32__)
#    define VN_BASE_PRINTF(FORMAT, FIRST) __attribute__((format(gnu_printf, FORMAT, FIRST)))
#else
#    define VN_BASE_PRINTF(FORMAT, FIRST) __attribute__((format(printf, FORMAT, FIRST)))
#endif

#if !defined(__cpp_exceptions)
#    error "libVNbase reports failures by exceptions: compile without -fno-exceptions"
#endif
