# vnbase_build_values(<source>...): tells these sources, in the calling folder, of the build, by the texts VN_BUILD_NUMBER,
# VN_BUILD_TYPE, VN_BUILDER and VN_BUILD_DATE. The date is that of compiling, unless the environment fixes it by
# SOURCE_DATE_EPOCH when CMake configures.
set(VNBASE_BUILD_NUMBER 187 CACHE STRING "Number of the build, in its stamp")
set(account "$ENV{USER}")
foreach(name LOGNAME USERNAME)
    if(account STREQUAL "")
        set(account "$ENV{${name}}")
    endif()
endforeach()
if(account STREQUAL "")
    set(account unknown)
endif()
set(VNBASE_BUILDER "${account}" CACHE STRING "The account that builds")

function(vnbase_build_values)
    set(values
        "VN_BUILD_NUMBER=\"${VNBASE_BUILD_NUMBER}\""
        "VN_BUILD_TYPE=\"${CMAKE_SYSTEM_NAME} ${CMAKE_SYSTEM_PROCESSOR} $<CONFIG>\""
        "VN_BUILDER=\"${VNBASE_BUILDER}\"")
    set(date_value __DATE__)
    if(DEFINED ENV{SOURCE_DATE_EPOCH})
        string(TIMESTAMP date "%b %d %Y" UTC)
        # The compiler's form: days below 10 have a blank.
        string(REPLACE " 0" "  " date "${date}")
        set(date_value "\"${date}\"")
    endif()
    list(APPEND values "VN_BUILD_DATE=${date_value}")
    set_source_files_properties(${ARGN} PROPERTIES COMPILE_DEFINITIONS "${values}")
endfunction()
