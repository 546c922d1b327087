# vnbase_wing(<name> LAYER <n> [HEADERS ...] [BODIES ...] [PRIVATE ...] [SOURCES ...] [POSIX ...] [WINDOWS ...] ...)
#
# One wing of the library: its public headers, the bodies of their templates, its private headers, and its sources for every
# platform, for POSIX systems, for Windows, for x86 processors and for all others. A file may include files of its own layer and of those below. The wings are
# described in src/base/README.md; tests/package/checkmap.py compares both with the includes.
#
# Collects public_headers, template_bodies, private_headers and sources in the caller's scope.
function(vnbase_wing name)
    cmake_parse_arguments(PARSE_ARGV 1 wing "" "LAYER"
        "HEADERS;BODIES;PRIVATE;SOURCES;POSIX;POSIX_PRIVATE;WINDOWS;WINDOWS_HEADERS;WINDOWS_PRIVATE;X86;NOT_X86")
    if(wing_UNPARSED_ARGUMENTS OR NOT wing_LAYER)
        message(FATAL_ERROR "The wing ${name} has no layer, or words that nobody knows: ${wing_UNPARSED_ARGUMENTS}")
    endif()
    list(APPEND public_headers ${wing_HEADERS})
    list(APPEND template_bodies ${wing_BODIES})
    list(APPEND private_headers ${wing_PRIVATE})
    list(APPEND sources ${wing_SOURCES})
    if(WIN32)
        list(APPEND public_headers ${wing_WINDOWS_HEADERS})
        list(APPEND private_headers ${wing_WINDOWS_PRIVATE})
        list(APPEND sources ${wing_WINDOWS})
    else()
        list(APPEND private_headers ${wing_POSIX_PRIVATE})
        list(APPEND sources ${wing_POSIX})
    endif()
    if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|i[3-6]86)$")
        list(APPEND sources ${wing_X86})
    else()
        list(APPEND sources ${wing_NOT_X86})
    endif()
    return(PROPAGATE public_headers template_bodies private_headers sources)
endfunction()
