# What gets installed, by component: runtime (the libraries), development (headers, links, import libraries, CMake and
# pkg-config files, and what debuggers show of the classes), documentation, tools (programs, by VNbaseProgram.cmake).

# vnbase_install_library(<target> FILE_SETS <set>...): a library of the family with its headers, as a target VN::... of the
# CMake package VNbase, and for pkg-config as cmake/<target>.pc.in says.
function(vnbase_install_library target)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "FILE_SETS")
    set(file_sets "")
    foreach(set IN LISTS arg_FILE_SETS)
        list(APPEND file_sets FILE_SET ${set} DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/vn" COMPONENT development)
    endforeach()
    install(TARGETS ${target} EXPORT ${target}Targets
        RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT runtime
        LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT runtime NAMELINK_COMPONENT development
        ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT development
        ${file_sets})
    install(EXPORT ${target}Targets NAMESPACE VN:: DESTINATION "${CMAKE_INSTALL_LIBDIR}/cmake/VNbase"
        COMPONENT development)

    # From the folder of the .pc file, so that an installed tree can be moved; the folder may lie deeper than lib/pkgconfig.
    set(pc_folder "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig")
    file(RELATIVE_PATH to_prefix "${pc_folder}" "${CMAKE_INSTALL_PREFIX}")
    file(RELATIVE_PATH libdir "${CMAKE_INSTALL_PREFIX}" "${CMAKE_INSTALL_FULL_LIBDIR}")
    file(RELATIVE_PATH includedir "${CMAKE_INSTALL_PREFIX}" "${CMAKE_INSTALL_FULL_INCLUDEDIR}/vn")
    string(REGEX REPLACE "/$" "" to_prefix "${to_prefix}")
    configure_file("${PROJECT_SOURCE_DIR}/cmake/${target}.pc.in" ${target}.pc @ONLY)
    install(FILES "${CMAKE_CURRENT_BINARY_DIR}/${target}.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig"
        COMPONENT development)
endfunction()

# vnbase_install_documents(): the pages, their pictures and the changelog; the site as well, if VNBASE_SITE names its folder.
set(VNBASE_SITE "" CACHE PATH "Folder of the built site, to install with the documents")
function(vnbase_install_documents)
    file(GLOB pages CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/docs/*.md" "${PROJECT_SOURCE_DIR}/docs/*.svg"
        "${PROJECT_SOURCE_DIR}/docs/*.png")
    install(FILES ${pages} DESTINATION "${CMAKE_INSTALL_DOCDIR}/docs" COMPONENT documentation)
    install(FILES "${PROJECT_SOURCE_DIR}/README.md" "${PROJECT_SOURCE_DIR}/CHANGELOG.md"
        DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT documentation)
    if(VNBASE_SITE)
        install(DIRECTORY "${VNBASE_SITE}/" DESTINATION "${CMAKE_INSTALL_DOCDIR}/html" COMPONENT documentation)
    endif()
endfunction()

# vnbase_install_debugger_files(<target>): what debuggers show of the library. GDB loads its file by itself: in the build tree
# from beside the library, and installed from the folder that mirrors the library's place.
function(vnbase_install_debugger_files target)
    set(folder "${PROJECT_SOURCE_DIR}/debugger")
    install(FILES "${folder}/libVNbase.natvis" DESTINATION "${CMAKE_INSTALL_DATADIR}/vnbase" COMPONENT development)
    if(WIN32)
        return()
    endif()
    file(GENERATE OUTPUT "$<TARGET_FILE:${target}>-gdb.py" INPUT "${folder}/libVNbase-gdb.py" TARGET ${target})
    # The prefix is known at the installation alone.
    install(FILES "${folder}/libVNbase-gdb.py" RENAME "lib${target}.so.${PROJECT_VERSION}-gdb.py" COMPONENT development
        DESTINATION "${CMAKE_INSTALL_DATADIR}/gdb/auto-load\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}")
endfunction()
