# vnbase_build_values(<source>...): tells these sources, in the calling folder, of the build. VN_BUILD_NUMBER,
# VN_BUILD_TYPE and VN_BUILDER are texts. VN_BUILD_DATE is one where the environment fixes the date of the build by
# SOURCE_DATE_EPOCH; elsewhere the compiler knows the date.
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
    if(DEFINED ENV{SOURCE_DATE_EPOCH})
        string(TIMESTAMP date "%b %d %Y" UTC)
        # The compiler's form: days below 10 have a blank.
        string(REPLACE " 0" "  " date "${date}")
        list(APPEND values "VN_BUILD_DATE=\"${date}\"")
    endif()
    set_source_files_properties(${ARGN} PROPERTIES COMPILE_DEFINITIONS "${values}")
endfunction()
